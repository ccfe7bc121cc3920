#pragma once

namespace tidwen {

/// While one lives, the first Ctrl-C is noted instead of ending the program, so that work can be called off;
/// a second one ends it. One at a time.
class Interruption {
  public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    bool came() const;
};

} // namespace tidwen
