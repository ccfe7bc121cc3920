#include "app/models/spoken_language.h"

#include "base/language.h"
#include "program/resources.h"

#include <QGuiApplication>
#include <utility>

namespace tidwen {

SpokenLanguage::SpokenLanguage(Texts& texts, std::filesystem::path resources, Property<std::string>& choice)
    : texts_(texts),
      resources_(std::move(resources)),
      choice_(choice),
      following_(choice.observe([this](const auto&) { speak(); })) {
    speak();
}

void SpokenLanguage::speak() {
    const auto language = spokenLanguage(resources_, choice_.get());
    QGuiApplication::setLayoutDirection(isRightToLeft(language) ? Qt::RightToLeft : Qt::LeftToRight);
    if (language == texts_.language()) return;
    texts_ = Texts::load(resources_, language);
    changed.emit();
}

} // namespace tidwen
