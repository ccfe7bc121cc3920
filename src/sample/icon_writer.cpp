#include "sample/icon_writer.h"

#include "sample/byte_writer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>

namespace tidwen {

namespace {

constexpr int side = 128;
constexpr std::size_t pixels = std::size_t{side} * side;

struct Point {
    double x, y; ///< from the middle
};

struct Color {
    double red, green, blue;
};

/// The upper and the lower edge of a tile.
struct Gradient {
    Color top, bottom;
};
constexpr std::array gradients = {
    Gradient{{94, 148, 255}, {38, 84, 206}},  Gradient{{255, 179, 92}, {226, 112, 30}},
    Gradient{{92, 205, 150}, {20, 128, 84}},  Gradient{{190, 140, 255}, {112, 66, 204}},
    Gradient{{255, 128, 138}, {204, 52, 84}}, Gradient{{92, 208, 222}, {16, 124, 150}},
};

double circle(Point at, double radius) {
    return std::hypot(at.x, at.y) - radius;
}

double box(Point at, double wide, double high, double radius) {
    const double x = std::abs(at.x) - wide + radius, y = std::abs(at.y) - high + radius;
    return std::hypot(std::max(x, 0.0), std::max(y, 0.0)) + std::min(std::max(x, y), 0.0) - radius;
}

// Figures: the distance from their edge, negative inside.
double ring(Point at) {
    return std::abs(circle(at, 25)) - 6;
}
double leaf(Point at) {
    return std::max(circle({at.x - 15, at.y + 15}, 40), circle({at.x + 15, at.y - 15}, 40));
}
double bars(Point at) {
    const double left = box({at.x + 20, at.y - 8}, 6, 20, 6), right = box({at.x - 20, at.y - 14}, 6, 14, 6);
    return std::min({left, box(at, 6, 28, 6), right});
}
double moon(Point at) {
    return std::max(circle(at, 30), -circle({at.x - 14, at.y + 8}, 25));
}
double diamond(Point at) {
    return (std::abs(at.x) + std::abs(at.y) - 36) / std::sqrt(2.0);
}
double cross(Point at) {
    return std::min(box(at, 8, 30, 7), box(at, 30, 8, 7));
}
constexpr std::array figures = {ring, leaf, bars, moon, diamond, cross};

double coverage(double distance) {
    return std::clamp(0.5 - distance, 0.0, 1.0);
}

std::uint8_t mixed(double from, double to, double share) {
    return static_cast<std::uint8_t>(std::lround(from + (to - from) * share));
}

using Plane = std::array<std::uint8_t, pixels>;

struct Picture {
    Plane red, green, blue, alpha;
};

Picture drawn(std::size_t number) {
    const auto& [top, bottom] = gradients[number % gradients.size()];
    const auto figure = figures[number / gradients.size() % figures.size()];
    Picture picture;
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::size_t line = i / side;
        const auto row = static_cast<double>(line), column = static_cast<double>(i % side);
        const Point at = {column - (side - 1) / 2.0, row - (side - 1) / 2.0};
        const double white = coverage(figure(at));
        const auto part = [&](double upper, double lower) {
            return mixed(mixed(upper, lower, row / side), 255, white);
        };
        picture.red[i] = part(top.red, bottom.red);
        picture.green[i] = part(top.green, bottom.green);
        picture.blue[i] = part(top.blue, bottom.blue);
        picture.alpha[i] = mixed(0, 255, coverage(box(at, 58, 58, 27)));
    }
    return picture;
}

/// Runs of up to 130 equal bytes, and up to 128 others as they are.
std::string packed(const Plane& plane) {
    std::string bytes;
    const auto runFrom = [&](std::size_t start) {
        std::size_t end = start + 1;
        while (end < pixels && end - start < 130 && plane[end] == plane[start])
            ++end;
        return end - start;
    };
    for (std::size_t i = 0; i < pixels;) {
        if (const auto run = runFrom(i); run >= 3) {
            bytes += static_cast<char>(run + 125);
            bytes += static_cast<char>(plane[i]);
            i += run;
            continue;
        }
        const auto start = i;
        while (i < pixels && i - start < 128 && runFrom(i) < 3)
            ++i;
        bytes += static_cast<char>(i - start - 1);
        bytes.append(plane.begin() + static_cast<std::ptrdiff_t>(start),
                     plane.begin() + static_cast<std::ptrdiff_t>(i));
    }
    return bytes;
}

std::string entry(std::string_view type, const std::string& content) {
    return ByteWriter().text(type).big32(content.size() + 8).text(content).take();
}

} // namespace

std::string writeIcon(std::string_view name) {
    const auto number = std::accumulate(name.begin(), name.end(), std::size_t{0}, [](auto sum, char letter) {
        return sum * 31 + static_cast<unsigned char>(letter);
    });
    const auto picture = drawn(number);
    const auto colors =
        std::string(4, '\0') + packed(picture.red) + packed(picture.green) + packed(picture.blue);
    return entry("icns", entry("it32", colors)
                             + entry("t8mk", std::string(picture.alpha.begin(), picture.alpha.end())));
}

} // namespace tidwen
