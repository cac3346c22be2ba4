// The verbs of the facades: the effect of a member's one line.

#include "runtime/facade_call.h"
#include "support/qt_loop.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>

namespace marlune::test {

namespace {

enum class Mood { Calm = 3 };

struct Point {
    double x = 0, y = 0;
};

class Part : public QObject {
    Q_OBJECT

public:
    Mood mood() const { return Mood::Calm; }
    void set_name(const QString& name) { given = name; }

    QString given;
};

class Target : public QObject {
    Q_OBJECT

public:
    QString name() const { return given; }
    void set_name(const QString& name) { given = name; }
    void set_width(int width) { number = width; }
    Point middle() const { return {1, 2}; }
    Part* part() const { return part_.get(); }

    QString given;
    int number = 0;
    std::unique_ptr<Part> part_;

private:
    LiveObject live_{this};
};

int sum_with(Target& target, int number)
{
    return target.number + number;
}

/** A conversion like those of library parts whose types cross the public interface. */
std::string convert(Point point, To<std::string>)
{
    return std::to_string(static_cast<int>(point.x)) + ','
        + std::to_string(static_cast<int>(point.y));
}

class FacadeCall : public testing::Test {
protected:
    FacadeCall() { have_application(); }

    std::unique_ptr<Target> target = std::make_unique<Target>();
    Target* const nowhere = nullptr;
};

/** Stands for a verb, to test the name that it receives. */
std::string_view name_of(Caller caller)
{
    return TracedName(caller.member).get();
}

/** Stands for a facade, to test the names of its members. */
struct Facade {
    std::string_view member() const { return name_of(static_cast<QObject*>(nullptr)); }
    std::tuple<int, std::string_view> member_with(std::string, void (*)(int)) const
    {
        return {0, name_of(static_cast<QObject*>(nullptr))};
    }
};

TEST_F(FacadeCall, knows_the_member_that_makes_it)
{
    EXPECT_TRUE(Facade().member().ends_with("::Facade::member")) << Facade().member();
    const auto name = std::get<1>(Facade().member_with({}, nullptr));
    EXPECT_TRUE(name.ends_with("::Facade::member_with")) << name;
    EXPECT_EQ(qualified_name("virtual void marlune::MView::reset() const"),
              "marlune::MView::reset");
    EXPECT_EQ(qualified_name("class std::tuple<unsigned int,unsigned int> __cdecl "
                             "marlune::MView::get_resolution(void) const"),
              "marlune::MView::get_resolution");
}

TEST_F(FacadeCall, converts_arguments_and_results)
{
    serve_while([&] {
        tell(target.get(), &Target::set_name, std::string("ä"));
        complete(target.get(), &Target::set_width, 7u);
        EXPECT_EQ(ask(target.get(), std::string(), &Target::name), "ä");
        EXPECT_EQ(ask(target.get(), std::string(), &Target::middle), "1,2");
        EXPECT_EQ(ask(target.get(), 0.5, sum_with, uint8_t{3}), 10.0);
        EXPECT_EQ(complete(target.get(), 0, [](Target& t) { return t.number; }), 7);
    });
}

TEST_F(FacadeCall, continues_with_the_object_that_a_member_returns)
{
    target->part_ = std::make_unique<Part>();
    serve_while([&] {
        EXPECT_EQ(ask(target.get(), -1, &Target::part, &Part::mood), 3);
        tell(target.get(), &Target::part, &Part::set_name, std::string("part"));
        EXPECT_EQ(ask(target.get(), std::string(), &Target::part,
                      [](Part& part) { return part.given + u'!'; }),
                  "part!");
    });
}

TEST_F(FacadeCall, returns_the_default_where_it_has_no_target)
{
    serve_while([&] {
        EXPECT_EQ(ask(target.get(), -1, &Target::part, &Part::mood), -1) << "a member returns null";
        tell(target.get(), &Target::part, &Part::set_name, std::string("part"));
        EXPECT_EQ(ask(nowhere, std::string("none"), &Target::name), "none");
        EXPECT_EQ(complete(nowhere, 5, sum_with, 1), 5);
        tell(nowhere, &Target::set_width, 1);
        complete(nowhere, &Target::set_width, 1);
        post(nowhere, &Target::set_width, 1);
        with_live_object(nowhere, &Target::set_width, 1);
    });
}

TEST_F(FacadeCall, that_is_posted_copies_its_arguments)
{
    {
        std::string name = "a name that is too long to be kept in place";
        post(target.get(), &Target::set_name, name);
        name = "changed";
    }
    EXPECT_EQ(target->given, QString());
    serve_events();
    EXPECT_EQ(target->given, "a name that is too long to be kept in place");
}

TEST_F(FacadeCall, with_a_live_object_runs_on_the_caller_s_thread)
{
    std::thread::id ran_on;
    std::thread([&] {
        with_live_object(target.get(), [&](Target&) { ran_on = std::this_thread::get_id(); });
        EXPECT_EQ(ran_on, std::this_thread::get_id());
    }).join();
}

}  // namespace

}  // namespace marlune::test

#include "facade_call.moc"
