#pragma once

#include "base/observable.h"
#include "base/texts.h"

#include <filesystem>
#include <string>

namespace tidwen {

/// Makes the application speak the language that the user chose, and write in its direction. Main thread
/// only.
class SpokenLanguage {
  public:
    /// `choice`: the setting, here or in another process. What is passed outlives this.
    SpokenLanguage(Texts& texts, std::filesystem::path resources, Property<std::string>& choice);

    const Texts& texts() const { return texts_; }
    /// Emitted once the texts are in another language.
    Signal<> changed;

  private:
    void speak();

    Texts& texts_;
    std::filesystem::path resources_;
    Property<std::string>& choice_;
    Subscription following_;
};

} // namespace tidwen
