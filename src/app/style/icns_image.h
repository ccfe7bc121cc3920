#pragma once

#include <QImage>
#include <string>

namespace tidwen {

/// The picture in a file of icons ("icns"), fitted into a square of `pixels`; null when there is none that
/// can be read. Any thread.
QImage icnsImage(const std::string& file, int pixels);

} // namespace tidwen
