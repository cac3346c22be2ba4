#include "measures/measures.h"

#include "ours/view.h"
#include "raw/view.h"

#include <marlune/app.h>

#include <QObject>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace marlune::bench {

namespace {

constexpr Picture pictures[] = {
    {1280, 720, false},
    {1280, 720, true},
    {1920, 1080, false},
    {1920, 1080, true},
};
constexpr Picture one_of_many{640, 360};
constexpr std::size_t view_counts[] = {1, 2, 4, 8, 16};

/** Views of both sides that show the same scene and are drawn together. */
class Views {
public:
    Views(Gpu& gpu, Picture picture) : gpu_(gpu), picture_(picture) {}

    void grow_to(std::size_t count)
    {
        while (library_.size() < count) {
            library_.push_back(std::make_unique<BenchView>(gpu_, picture_));
            raw_.push_back(
                std::make_unique<RawView>(static_cast<QObject*>(MARLUNE_CTX), gpu_, picture_));
        }
    }

    /** Measures the time of drawing each view once. */
    Comparison compare(int rounds)
    {
        const uint64_t before = frames_drawn();
        uint64_t asked = 0;
        const auto draw_library = [&] {
            asked += library_.size();
            for (const auto& view : library_)
                view->render();
        };
        const auto draw_raw = [&] {
            for (const auto& view : raw_)
                view->render();
        };
        wait_for_next_frame();
        const auto times =
            compare_times<Milliseconds>({rounds, 4s}, draw_library, draw_raw, wait_for_next_frame);
        if (frames_drawn() - before != asked)
            throw std::runtime_error("a frame that was asked for has not been drawn");
        return times;
    }

private:
    uint64_t frames_drawn() const
    {
        uint64_t sum = 0;
        for (const auto& view : library_)
            sum += view->frames_drawn();
        return sum;
    }

    Gpu& gpu_;
    Picture picture_;
    std::vector<std::unique_ptr<BenchView>> library_;
    std::vector<std::unique_ptr<RawView>> raw_;
};

std::string to_text(Picture picture)
{
    return std::to_string(picture.width) + 'x' + std::to_string(picture.height);
}

}  // namespace

void measure_frames(Table& table, Effort effort, Gpu& gpu)
{
    for (const Picture picture : pictures) {
        Views views(gpu, picture);
        views.grow_to(1);
        const std::string name =
            "frame, " + to_text(picture) + (picture.mipmaps ? ", mipmaps" : "");
        table.add({name, "ms", views.compare(effort.samples(150))});
    }
}

void measure_views(Table& table, Effort effort, Gpu& gpu)
{
    Views views(gpu, one_of_many);
    for (const std::size_t count : view_counts) {
        views.grow_to(count);
        const std::string name = "frame of " + std::to_string(count)
            + (count == 1 ? " view, " : " views, ") + to_text(one_of_many);
        table.add({name, "ms", views.compare(effort.samples(60)), false});
    }
}

}  // namespace marlune::bench
