#pragma once

#include <gtest/gtest.h>

namespace marlune::test {

/** The members of a facade that have no parameters and only return a value. */
template <auto... Members>
struct Getters {
    template <typename Facade>
    static void call(const Facade& view)
    {
        (static_cast<void>((view.*Members)()), ...);
    }

    /** Expects the defaults of a facade without a view: 0, false, an empty text, an empty list. */
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
