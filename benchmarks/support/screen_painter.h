#pragma once

#include <cstdio>

namespace marlune::bench {

/**
 * A separate process that changes the first screen sixty times a second: numbers in a strip across
 * its middle, as in numbered_picture.h. It ends with this object.
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

/** The work of that process: paints until its standard input ends. */
int paint_screen(int argument_count, char** arguments);

}  // namespace marlune::bench
