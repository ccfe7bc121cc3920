#pragma once

#include "base/property_list.h"

#include <cstdint>
#include <random>
#include <string>

namespace tidwen::test {

/// With a byte-order mark.
std::string utf16(const std::string& ascii, bool bigEndian);

/// A random value with every type of the format, at most `depth` containers deep. Equal seeds give equal
/// values. `uids`: including references of keyed archives.
class PropertyListGenerator {
  public:
    explicit PropertyListGenerator(unsigned seed, bool uids = true) : random_(seed), uids_(uids) {}
    PropertyListValue value(int depth = 4);

  private:
    std::uint64_t below(std::uint64_t bound) { return random_() % bound; }
    PropertyListValue scalar();
    std::string text();
    std::uint64_t entries();

    std::mt19937_64 random_;
    bool uids_;
};

} // namespace tidwen::test
