#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {

struct Message;

/// A value of a placeholder: inserted as it is, or a text that is translated together with the message
/// around it.
class MessageArgument {
  public:
    MessageArgument(std::string text) : text_(std::move(text)) {} // NOLINT(google-explicit-constructor)
    MessageArgument(const char* text) : text_(text) {}            // NOLINT(google-explicit-constructor)
    MessageArgument(Message message);                             // NOLINT(google-explicit-constructor)

    /// The text to translate, or null when the value is inserted as it is. Owned by this.
    const Message* message() const { return message_.get(); }
    /// The value that is inserted as it is; empty when it is a message.
    const std::string& text() const { return text_; }

    friend bool operator==(const MessageArgument& a, const MessageArgument& b);

  private:
    std::string text_;
    std::shared_ptr<const Message> message_; ///< shared by copies: it is never changed
};

/// A text for people: its key and the values of the key's placeholders in order ("failure.exit %@" with
/// {"64"}). `Texts` translates it; code compares the key.
struct Message {
    std::string key;
    std::vector<MessageArgument> arguments = {};

    friend bool operator==(const Message&, const Message&) = default;
};

inline MessageArgument::MessageArgument(Message message)
    : message_(std::make_shared<const Message>(std::move(message))) {}

inline bool operator==(const MessageArgument& a, const MessageArgument& b) {
    if (!a.message_ || !b.message_) return a.message_ == b.message_ && a.text_ == b.text_;
    return *a.message_ == *b.message_;
}

} // namespace tidwen
