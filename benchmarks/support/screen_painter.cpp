#include "support/screen_painter.h"

#include "support/numbered_picture.h"

#include <QGuiApplication>
#include <QPainter>
#include <QRasterWindow>
#include <QScreen>
#include <QSocketNotifier>
#include <QTimer>

#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace marlune::bench {

namespace {

constexpr int strip_height = 64;
constexpr int interval = 1000 / 60;

class Strip : public QRasterWindow {
public:
    explicit Strip(const QScreen& screen)
    {
        // The window manager must not move it.
        setFlags(Qt::BypassWindowManagerHint | Qt::WindowStaysOnTopHint);
        const QRect area = screen.geometry();
        setGeometry(area.x(), area.y() + (area.height() - strip_height) / 2, area.width(),
                    strip_height);
    }

    void advance()
    {
        number_ = (number_ + 1) % (1 << bits);
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const int cell = width() / static_cast<int>(number_cells);
        const int cells = 1 << (bits + 1) | number_;  // white, black, and the number
        for (int i = 0; i < static_cast<int>(number_cells); ++i) {
            const bool white = cells >> (bits + 1 - i) & 1;
            painter.fillRect(i * cell, 0, cell, height(), white ? Qt::white : Qt::black);
        }
    }

private:
    static constexpr int bits = static_cast<int>(number_cells) - 2;

    int number_ = 0;
};

}  // namespace

ScreenPainter::ScreenPainter()
{
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    process_ = popen(('\'' + program + "' --paint-screen").c_str(), "w");
    if (!process_)
        throw std::runtime_error("cannot run " + program);
}

ScreenPainter::~ScreenPainter()
{
    pclose(process_);
}

int paint_screen(int argument_count, char** arguments)
{
    const QGuiApplication application(argument_count, arguments);
    Strip strip(*QGuiApplication::primaryScreen());
    strip.show();
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, &strip, &Strip::advance);
    timer.start(interval);
    const QSocketNotifier end(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&end, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return QGuiApplication::exec();
}

}  // namespace marlune::bench
