#pragma once

#include <cstdio>

namespace marlune::bench {

/**
 * A process of its own that changes the first screen sixty times a second: numbers in a strip across its
 * middle, as in numbered_picture.h. Ends when this goes.
 */
class ScreenPainter {
public:
    ScreenPainter();
    ~ScreenPainter();
    ScreenPainter(const ScreenPainter&) = delete;
    ScreenPainter& operator=(const ScreenPainter&) = delete;

private:
    std::FILE* process_;
};

/** What that process does: paints until its standard input ends. */
int paint_screen(int argument_count, char** arguments);

}  // namespace marlune::bench
