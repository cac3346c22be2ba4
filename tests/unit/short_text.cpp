#include "views/short_text.h"

#include <gtest/gtest.h>

namespace marlune::test {

namespace {

const QString ELLIPSIS = QStringLiteral("\u2026");

}  // namespace

TEST(ShortText, leaves_a_text_alone_that_is_within_both_limits)
{
    for (const QString& text : {QString(), QStringLiteral("moon"), QStringLiteral("a\nb")})
        EXPECT_EQ(shortened(text, 4, 2), text);
}

TEST(ShortText, ends_a_longer_text_with_an_ellipsis)
{
    EXPECT_EQ(shortened(QStringLiteral("moons"), 4, 2), "moon" + ELLIPSIS);
    EXPECT_EQ(shortened(QString(50'000'000, u'x'), 4, 2), "xxxx" + ELLIPSIS);
    EXPECT_EQ(shortened(QStringLiteral("moon"), 0, 2), ELLIPSIS);
    EXPECT_EQ(shortened(QStringLiteral("moon"), -1, 2), ELLIPSIS);
}

TEST(ShortText, counts_each_kind_of_line_end)
{
    for (const QString& end : {QStringLiteral("\n"), QStringLiteral("\r\n"), QStringLiteral("\r"),
                               QStringLiteral("\u2028"), QStringLiteral("\u2029")}) {
        EXPECT_EQ(shortened("a" + end + "b", 100, 2), "a" + end + "b");
        EXPECT_EQ(shortened("a" + end + "b" + end + "c", 100, 2), "a" + end + "b" + ELLIPSIS);
    }
}

TEST(ShortText, keeps_one_line_where_one_is_allowed)
{
    EXPECT_EQ(shortened(QStringLiteral("moon\nforged line"), 100, 1), "moon" + ELLIPSIS);
}

TEST(ShortText, never_splits_a_character)
{
    EXPECT_EQ(shortened(QStringLiteral("ab\U0001F30A"), 3, 1), "ab" + ELLIPSIS);
    EXPECT_EQ(shortened(QStringLiteral("ab\U0001F30A"), 4, 1), QStringLiteral("ab\U0001F30A"));
}

}  // namespace marlune::test
