#pragma once

#include <gtest/gtest.h>

namespace marlune::test {

/** The members of a facade that take nothing and only answer. */
template <auto... Members>
struct Getters {
    template <typename Facade>
    static void call(const Facade& view)
    {
        (static_cast<void>((view.*Members)()), ...);
    }

    /** Expects what a facade answers without a view: 0, false, no text, an empty list. */
    template <typename Facade>
    static void expect_defaults(const Facade& view)
    {
        int number = 0;
        (expect_default((view.*Members)(), ++number), ...);
    }

private:
    template <typename Value>
    static void expect_default(const Value& value, int number)
    {
        EXPECT_EQ(value, Value()) << "of getter number " << number << " of the list";
    }
};

}  // namespace marlune::test
