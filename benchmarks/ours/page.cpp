#include "ours/page.h"

#include "ours/view.h"
#include "support/files.h"

#include <stdexcept>
#include <utility>
#include <variant>
#include <vector>

namespace marlune::bench {

namespace {

constexpr int full_size = 100;
constexpr int highest_refresh_rate = 120;

uint8_t* serve(std::string path, bool&, uint64_t& size)
{
    const File file = find_file(path);
    size = file.size;
    return const_cast<uint8_t*>(file.bytes);
}

}  // namespace

BenchPage::BenchPage(Gpu& gpu, Picture picture, const std::string& url)
    : method_{.name = "add",
              .args = {{db::VariantTypeStd::INT, "number"}},
              .return_type = db::ReturnInfoStd{db::VariantTypeStd::INT}},
      signal_{.name = "tick", .args = {{db::VariantTypeStd::INT, "number"}}, .is_signal = true},
      property_{.name = "number", .type = db::VariantTypeStd::INT, .value = db::ValueStd(0)},
      object_{.name = "bench",
              .methods = {{"add", &method_}, {"tick", &signal_}},
              .properties = {{"number", &property_}}}
{
    method_.func_call_method = [this](db::MethodInfoStd*, std::vector<db::ContainerStd> values,
                                      auto) { return add(values.front()); };
    set_up(facade_, gpu, picture);
    facade_.set_zoom_factor(full_size);
    facade_.set_url(url);
    facade_.set_func_resource_file(serve);
    facade_.set_func_javascript_console_log(
        [this](int level, std::string message, int, std::string) {
            answers_.add_message(level, std::move(message));
        });
    // The highest rate, so that each of a host's sixty frames a second is due. With the default
    // rate, a frame that comes late would make the next one come too early.
    facade_.set_refresh_rate(highest_refresh_rate);
    facade_.webchannel_registerObject("bench", &object_);
    if (!facade_.load())
        throw std::runtime_error("the library cannot load a web view (--verbose shows why)");
}

BenchPage::~BenchPage()
{
    facade_.destroy();
}

/** Numbers of pages arrive as double. */
db::ContainerStd BenchPage::add(const db::ContainerStd& number)
{
    answers_.add_call();
    const auto value = static_cast<int32_t>(std::get<double>(std::get<db::ValueStd>(number)));
    return db::ValueStd(value + 1);
}

void BenchPage::emit_tick(int number)
{
    signal_.func_emit_signal(&signal_, {db::ValueStd(number)}, {db::VariantTypeStd::INT});
}

void BenchPage::set_number(int number)
{
    {
        const db::ValueLock lock;
        property_.value = db::ValueStd(number);
    }
    property_.func_valueChanged_updateQt(&property_);
}

}  // namespace marlune::bench
