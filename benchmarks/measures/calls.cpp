#include "measures/measures.h"

#include "ours/view.h"
#include "raw/view.h"

#include <marlune/app.h>

#include <QObject>

namespace marlune::bench {

namespace {

constexpr Picture small{256, 256};
constexpr int calls_a_round = 50;

template <typename Call>
void measure_call(Table& table, const char* name, int rounds, const BenchView& view,
                  const RawView& raw, Call call)
{
    const auto times = compare_times<Microseconds>(
        {rounds, 5s, calls_a_round}, [&] { call(view.facade()); }, [&] { call(raw); }, [] {});
    table.add({name, "us", times});
}

}  // namespace

void measure_calls(Table& table, Effort effort, Gpu& gpu)
{
    const BenchView view(gpu, small);
    const RawView raw(static_cast<QObject*>(MARLUNE_CTX), gpu, small);
    const int rounds = effort.samples(300);
    measure_call(table, "call, blocking (mouse_move)", rounds, view, raw,
                 [](const auto& target) { target.mouse_move(7, 7); });
    measure_call(table, "call, queued (get_refresh_rate)", rounds, view, raw,
                 [](const auto& target) { target.get_refresh_rate(); });
}

}  // namespace marlune::bench
