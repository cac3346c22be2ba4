// The profile that all web views of a process share: the user agent, and cookies and their storage.

#include "support/library.h"
#include "support/process/scenarios.h"
#include "support/web/host_web_view.h"
#include "support/web/http_server.h"

#include <marlune/marlune.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

constexpr auto DEFAULT_USER_AGENT =
    "Mozilla/5.0 (X11; U; Linux x86_64) AppleWebKit/537.36 (KHTML, like Gecko) Ubuntu "
    "Chromium/124.0.6310.208 Chrome/122.0.6310.208 Safari/537.36";

int64_t in_an_hour()
{
    return std::time(nullptr) + 3600;
}

std::string unique_name(const std::string& beginning)
{
    static int count = 0;
    return beginning + std::to_string(++count);
}

/** The fields of a cookie, with harmless values. */
struct Cookie {
    std::string domain = "127.0.0.1";
    std::string path = "/";
    std::string value = "there";
    bool secure = false;
    std::string same_site = "default";
    int64_t expiry = in_an_hour();
};

class WebProfile : public testing::Test {
protected:
    WebProfile()
    {
        for (const char* const path : {"/", "/dir/", "/dir/deep", "/elsewhere"})
            server.serve(path, html("page"));
    }

    /** Sets a cookie with a name of its own and returns the name. */
    std::string set(const Cookie& cookie)
    {
        const std::string name = unique_name("cookie");
        view->set_cookie(cookie.domain, cookie.path, name, cookie.value, cookie.secure,
                         cookie.same_site, cookie.expiry);
        return name;
    }

    /** Whether the cookie is sent with a request for a page. */
    bool comes(const std::string& name, const std::string& path = "/",
               const std::string& host = "127.0.0.1")
    {
        return received(path, host).find(name + "=there") != std::string::npos;
    }

    /** The cookies that are sent with a request for a page. */
    std::string received(const std::string& path, const std::string& host)
    {
        EXPECT_TRUE(go_to(server.url(path, host)));
        return server.requests(path).back().header("cookie");
    }

    testing::AssertionResult go_to(const std::string& url)
    {
        return std::exchange(is_open, true) ? view.go_to(url) : view.open(url);
    }

    HttpServer server;
    HostWebView view;
    bool is_open = false;
};

// --- User agent --------------------------------------------------------------------------------

TEST_F(WebProfile, sends_the_user_agent_that_is_set)
{
    EXPECT_EQ(view->get_user_agent(), DEFAULT_USER_AGENT);
    ASSERT_TRUE(go_to(server.url("/")));
    const std::string before = server.requests("/").back().header("user-agent");

    HostWebView other;
    other->set_user_agent("Mine/1.0 (test)");
    ASSERT_TRUE(go_to(server.url("/")));
    EXPECT_EQ(server.requests("/").back().header("user-agent"), "Mine/1.0 (test)")
        << "a view with an open page does not send it";
    EXPECT_EQ(view.evaluate("navigator.userAgent"), "\"Mine/1.0 (test)\"");
    EXPECT_EQ(view->get_user_agent(), DEFAULT_USER_AGENT);
    EXPECT_EQ(other->get_user_agent(), DEFAULT_USER_AGENT);

    other->set_user_agent("");
    ASSERT_TRUE(go_to(server.url("/")));
    EXPECT_EQ(server.requests("/").back().header("user-agent"), before)
        << "an empty one must restore the engine's own";
}

// --- Cookies -----------------------------------------------------------------------------------

TEST_F(WebProfile, sends_a_cookie_that_is_set)
{
    const std::string name = set({});
    EXPECT_TRUE(comes(name));
    EXPECT_EQ(view.evaluate("document.cookie.includes('" + name + "=there')"), "true");
}

TEST_F(WebProfile, sends_cookies_to_their_domain_only)
{
    const std::string mine = set({}), other = set({.domain = "localhost"});
    EXPECT_TRUE(comes(mine));
    EXPECT_FALSE(comes(other));
    EXPECT_FALSE(comes(mine, "/", "localhost"));
    EXPECT_TRUE(comes(other, "/", "localhost"));
}

TEST_F(WebProfile, sends_cookies_to_subdomains_where_a_point_begins_the_domain)
{
    const std::string one = set({.domain = "localhost"}), all = set({.domain = ".a.localhost"});
    EXPECT_FALSE(comes(one, "/", "b.a.localhost"));
    EXPECT_TRUE(comes(all, "/", "b.a.localhost"));
    EXPECT_TRUE(comes(all, "/", "a.localhost"));
    EXPECT_FALSE(comes(all, "/", "c.localhost"));
}

TEST_F(WebProfile, sends_cookies_to_their_path_only)
{
    const std::string name = set({.path = "/dir"});
    EXPECT_FALSE(comes(name, "/"));
    EXPECT_FALSE(comes(name, "/elsewhere"));
    EXPECT_TRUE(comes(name, "/dir/"));
    EXPECT_TRUE(comes(name, "/dir/deep"));
}

TEST_F(WebProfile, sends_no_expired_cookie)
{
    const std::string late = set({.expiry = std::time(nullptr) - 60});
    const std::string soon = set({.expiry = std::time(nullptr) + 60});
    const std::string first = set({.expiry = 0});
    EXPECT_TRUE(comes(soon));
    EXPECT_FALSE(comes(late));
    EXPECT_FALSE(comes(first));
}

TEST_F(WebProfile, replaces_a_cookie_of_the_same_name)
{
    const std::string name = set({});
    view->set_cookie("127.0.0.1", "/", name, "new", false, "default", in_an_hour());
    const std::string cookies = received("/", "127.0.0.1");
    EXPECT_NE(cookies.find(name + "=new"), std::string::npos) << cookies;
    EXPECT_EQ(cookies.find(name + "=there"), std::string::npos) << cookies;

    view->set_cookie("127.0.0.1", "/", name, "new", false, "default", std::time(nullptr) - 60);
    EXPECT_EQ(received("/", "127.0.0.1").find(name), std::string::npos)
        << "an expired cookie must remove the old one";
}

TEST_F(WebProfile, sends_cookies_of_each_policy_to_their_own_site)
{
    for (const char* const policy : {"default", "lax", "strict", "Lax", "", "nonsense"})
        EXPECT_TRUE(comes(set({.same_site = policy}))) << policy;
}

TEST_F(WebProfile, holds_cookies_back_from_other_sites_by_their_policy)
{
    // What a page of another site sends by a form that it posts and by a link.
    HttpServer other;
    const std::string form = "<form method=post action='" + server.url("/elsewhere") + "'></form>";
    const std::string link = "<a href='" + server.url("/elsewhere") + "'></a>";
    other.serve("/", html(form + link));
    const std::string strict = set({.same_site = "strict"}), lax = set({.same_site = "lax"}),
                      capital = set({.same_site = "Lax"}), usual = set({});
    const auto taken_along = [&](const std::string& act) {
        const size_t before = server.requests("/elsewhere").size();
        EXPECT_TRUE(go_to(other.url("/", "localhost")));
        view.run(act);
        EXPECT_TRUE(view.draw_until([&] { return server.requests("/elsewhere").size() > before; }));
        return server.requests("/elsewhere").back().header("cookie");
    };
    const auto has = [](const std::string& cookies, const std::string& name) {
        return cookies.find(name + "=") != std::string::npos;
    };

    const std::string by_link = taken_along("document.links[0].click()");
    EXPECT_FALSE(has(by_link, strict));
    EXPECT_TRUE(has(by_link, lax));
    EXPECT_TRUE(has(by_link, capital));
    EXPECT_TRUE(has(by_link, usual));

    const std::string by_form = taken_along("document.forms[0].submit()");
    EXPECT_FALSE(has(by_form, strict));
    EXPECT_FALSE(has(by_form, lax));
    EXPECT_EQ(has(by_form, capital), has(by_form, usual)) << "\"Lax\" is no policy but the default";
}

TEST_F(WebProfile, accepts_cookies_without_a_view)
{
    HostWebView gone;
    MWebView facade = gone.facade();
    gone->destroy();
    const std::string name = unique_name("cookie");
    facade.set_cookie("127.0.0.1", "/", name, "there", false, "default", in_an_hour());
    EXPECT_TRUE(comes(name));
}

TEST_F(WebProfile, shares_cookies_among_views)
{
    server.serve("/set", {.headers = {{"Set-Cookie", "from_server=there"}}});
    ASSERT_TRUE(go_to(server.url("/set")));
    HostWebView other;
    ASSERT_TRUE(other.open(server.url("/")));
    EXPECT_NE(server.requests("/").back().header("cookie").find("from_server=there"),
              std::string::npos);
}

TEST_F(WebProfile, accepts_any_text_for_a_cookie)
{
    const std::string name = unique_name("cookie");
    view->set_cookie("", "", "", "", false, "", 0);
    view->set_cookie("nonsense domain", "no path", "a;b=c", "d\r\ne", true, "x", INT64_MIN);
    view->set_cookie("127.0.0.1", "/", name, "there", false, "default", in_an_hour());
    EXPECT_TRUE(comes(name)) << "a refused cookie has removed others";
}

// --- Scenarios: a process has one profile, and the engine reads its flags once -----------------
std::filesystem::path storage()
{
    return std::getenv("MARLUNE_TEST_STORAGE");
}

/** Files of pages: the folder also holds the graphics pipelines that views compile. */
bool stores_anything()
{
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(storage(), none)) {
        if (entry.path().filename() != "marlune_pipelines_vulkan")
            return true;
    }
    return false;
}

bool sends_the_cookie(HttpServer& server)
{
    HostWebView view;
    const bool loaded = bool(view.open(server.url("/")));
    view->destroy();
    return loaded && server.requests("/").back().header("cookie") == "kept=there";
}

void keep_a_cookie()
{
    HttpServer server;
    server.serve("/", html("page"));
    {
        HostWebView view;
        view->set_storage_path(storage());
        view->set_otr(false);
        view->set_cookie("127.0.0.1", "/", "kept", "there", false, "default", in_an_hour());
    }
    const bool is_sent = sends_the_cookie(server);
    // The engine writes its files from time to time, and at the end.
    end_scenario(is_sent && wait_until(stores_anything),
                 "the cookie is sent, and files are written");
}

void find_the_cookie()
{
    HttpServer server;
    server.serve("/", html("page"));
    {
        HostWebView view;
        view->set_storage_path(storage());
        view->set_otr(false);
    }
    end_scenario(sends_the_cookie(server), "the cookie of the last process is sent");
}

void keep_nothing()
{
    HttpServer server;
    server.serve("/", html("page"));
    {
        HostWebView view;
        view->set_storage_path(storage());
        view->set_cookie("127.0.0.1", "/", "kept", "there", false, "default", in_an_hour());
    }
    end_scenario(sends_the_cookie(server) && !stores_anything(),
                 "the cookie is sent, but nothing is stored");
}

/** A name that is not local: connections to local names count as encrypted. */
void send_secure_cookies()
{
    setenv("QTWEBENGINE_CHROMIUM_FLAGS",
           "--no-sandbox --host-resolver-rules=\"MAP a.example 127.0.0.1\"", 1);
    opts::SANDBOXED = true;  // which leaves the flags to the user
    HttpServer server;
    server.serve("/", html("page"));
    HostWebView view;
    view->set_cookie("a.example", "/", "secure", "there", true, "default", in_an_hour());
    view->set_cookie("a.example", "/", "plain", "there", false, "default", in_an_hour());
    const bool is_loaded = bool(view.open(server.url("/", "a.example")));
    const std::string cookies =
        is_loaded ? server.requests("/").back().header("cookie") : "no request";
    view->destroy();
    end_scenario(cookies == "plain=there", "a secure cookie is not sent in plain text");
}

void switch_with_a_page_open()
{
    HttpServer server;
    server.serve("/", html("page"));
    bool holds = true;
    {
        HostWebView view;
        view->set_storage_path(storage());
        holds = bool(view.open(server.url("/")));
        for (const bool off_the_record : {false, true, false, false, true, true}) {
            view->set_otr(off_the_record);
            holds = holds && view.evaluate("1 + 1") == "2" && view.go_to(server.url("/"));
        }
    }
    end_scenario(holds, "the view goes on");
}

void move_the_storage_with_a_page_open()
{
    HttpServer server;
    server.serve("/", html("page"));
    bool holds = true;
    {
        HostWebView view;
        view->set_storage_path(storage());
        for (const bool off_the_record : {true, false, true}) {
            view->set_otr(off_the_record);
            holds = holds && view.open(server.url("/"));
            for (const char* const folder : {"one", "other"}) {
                view->set_storage_path(storage() / folder);
                // A page of another site has a process of its own.
                holds = holds && view.go_to(server.url("/", "localhost"))
                    && view.go_to(server.url("/"));
            }
        }
    }
    end_scenario(holds, "the view goes on");
}

void forget_the_session()
{
    HttpServer server;
    server.serve("/set", {.headers = {{"Set-Cookie", "session=there"}}});
    server.serve("/", html("page"));
    std::string on_the_record, off_the_record;
    {
        HostWebView view;
        view->set_storage_path(storage());
        view->set_otr(false);
        require(view.open(server.url("/set")) && view.go_to(server.url("/")), "the pages load");
        on_the_record = server.requests("/").back().header("cookie");
        view->set_otr(true);
        require(view.go_to(server.url("/")), "the page loads off the record");
        off_the_record = server.requests("/").back().header("cookie");
    }
    end_scenario(on_the_record == "session=there" && off_the_record.empty(),
                 "a session goes with the record: " + on_the_record + ", " + off_the_record);
}

const Scenarios SCENARIOS = {
    {"forget_the_session", forget_the_session},
    {"keep_a_cookie", keep_a_cookie},
    {"find_the_cookie", find_the_cookie},
    {"keep_nothing", keep_nothing},
    {"send_secure_cookies", send_secure_cookies},
    {"move_the_storage_with_a_page_open", move_the_storage_with_a_page_open},
    {"switch_with_a_page_open", switch_with_a_page_open},
};

class ProfileOfAProcess : public testing::Test {
protected:
    ProfileOfAProcess()
    {
        std::string path = std::filesystem::temp_directory_path() / "marlune-storage-XXXXXX";
        EXPECT_TRUE(mkdtemp(path.data()));
        folder = path;
        setenv("MARLUNE_TEST_STORAGE", path.c_str(), 1);
    }
    ~ProfileOfAProcess() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    std::filesystem::path folder;
};

TEST_F(ProfileOfAProcess, keeps_cookies_from_one_process_to_the_next)
{
    ASSERT_TRUE(ends_cleanly("keep_a_cookie"));
    EXPECT_TRUE(ends_cleanly("find_the_cookie"));
}

TEST_F(ProfileOfAProcess, sends_secure_cookies_over_encrypted_connections_only)
{
    EXPECT_TRUE(ends_cleanly("send_secure_cookies"));
}

TEST_F(ProfileOfAProcess, keeps_nothing_until_it_is_taken_on_the_record)
{
    EXPECT_TRUE(ends_cleanly("keep_nothing"));
}

TEST_F(ProfileOfAProcess, leaves_the_session_of_a_server_with_the_record)
{
    EXPECT_TRUE(ends_cleanly("forget_the_session"));
}

TEST_F(ProfileOfAProcess, goes_on_and_off_the_record_with_a_page_open)
{
    EXPECT_TRUE(ends_cleanly("switch_with_a_page_open"));
}

TEST_F(ProfileOfAProcess, takes_another_folder_with_a_page_open)
{
    EXPECT_TRUE(ends_cleanly("move_the_storage_with_a_page_open"));
}

}  // namespace

}  // namespace marlune::test
