#pragma once

#include <cstddef>
#include <string>

namespace korvogit {

/// A line on standard error that moves while the program waits. Shows nothing when that is not a
/// terminal whose cursor can be moved.
class Spinner {
public:
    Spinner(std::string text, bool wanted);
    ~Spinner() { stop(); }
    Spinner(const Spinner&) = delete;
    Spinner& operator=(const Spinner&) = delete;

    /// How long to wait for something else, as for poll(2), before the next turn.
    int timeout() const;
    /// Draws the next picture.
    void turn();
    /// Says something else from now on, at once.
    void say(std::string text);
    /// Erases the line until the next turn, so that something else can be written.
    void hide();
    /// Erases the line for good.
    void stop();

private:
    std::string text_;
    bool spins_;
    std::size_t turns_ = 0;
    bool isShown_ = false;
};

}  // namespace korvogit
