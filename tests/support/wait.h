#pragma once

#include <chrono>
#include <thread>

namespace marlune::test {

/** Evaluates `holds` until it is true; returns false if that takes longer than `cap`. */
template <typename Predicate>
bool wait_until(Predicate holds, std::chrono::milliseconds cap = std::chrono::seconds(10))
{
    const auto end = std::chrono::steady_clock::now() + cap;
    while (!holds()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace marlune::test
