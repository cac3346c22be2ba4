// Pages in the engine's sandbox, which needs an ordinary user, and what it denies them. Each case
// runs in a process of its own, because the engine reads its flags once.

#include "support/library.h"
#include "support/message_log.h"
#include "support/process/processes.h"
#include "support/process/scenarios.h"
#include "support/web/host_object.h"
#include "support/web/host_web_view.h"
#include "support/web/http_server.h"
#include "support/web/resource_pack.h"

#include <marlune/marlune.h>

#include <gtest/gtest.h>

#include <grp.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

constexpr uid_t SOMEBODY = 54321;

/** Drops the rights of root permanently, if this process has them. */
void become_ordinary()
{
    if (geteuid() != 0)
        return;
    if (setgroups(0, nullptr) != 0 || setgid(SOMEBODY) != 0 || setuid(SOMEBODY) != 0)
        throw std::runtime_error("cannot become an ordinary user");
}

/** What the sandbox needs: each is checked as an ordinary user, in a short-lived process. */
struct Need {
    const char* name;
    bool (*is_met)();
};

/** Some systems let every user create one, but grant no rights in it. */
bool has_rights_in_namespaces()
{
    return unshare(CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET) == 0
        && chroot("/proc/self/fdinfo") == 0;
}

bool has_shared_memory()
{
    std::string path = "/dev/shm/marlune-XXXXXX";
    const int file = mkstemp(path.data());
    return file >= 0 && unlink(path.c_str()) == 0;
}

/** The kernel reads a filter, where it supports them, before it checks whether it may be set. */
bool has_filters_of_calls()
{
    return prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, nullptr) == -1 && errno == EFAULT;
}

constexpr Need NEEDS[] = {
    {"user namespaces with rights of their own", has_rights_in_namespaces},
    {"/dev/shm to write to", has_shared_memory},
    {"filters of system calls", has_filters_of_calls},
};

bool is_met(const Need& need)
{
    const pid_t child = fork();
    if (child == 0) {
        become_ordinary();
        _exit(need.is_met() ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

// --- What happens in the processes -------------------------------------------------------------

/** A field of a process's status in the kernel, as in "Seccomp: 2". */
std::string status_of(const Process& process, const std::string& name)
{
    std::ifstream file("/proc/" + std::to_string(process.id) + "/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name + ":"))
            return line.substr(line.find_first_not_of(" \t", name.size() + 1));
    }
    return "unknown";
}

std::string seccomp_of_the_pages()
{
    std::string result;
    for (const Process& page : page_processes())
        result += status_of(page, "Seccomp") + " ";
    return result;
}

/** What a page can read of another origin's secret, and how the page's process is confined. */
struct Findings {
    std::string secret;
    std::string own;
    std::string seccomp;
};

Findings explore()
{
    HttpServer server, other;
    server.serve("/", html("page"));
    server.serve("/own", html("own"));
    other.serve("/secret", html("secret"));
    HostWebView view;
    Findings findings;
    if (!view.open(server.url("/")))
        end_scenario(false, "the page loads");
    const auto text_of = [&](const std::string& url) {
        return view.evaluate("fetch('" + url + "').then(reply => reply.text())");
    };
    findings.own = text_of(server.url("/own"));
    findings.secret = text_of(other.url("/secret"));
    findings.seccomp = seccomp_of_the_pages();
    if (findings.secret.starts_with("threw")) {
        // By the rules of origins the server receives the request; the page alone cannot read the
        // reply.
        const bool is_told = view.draw_until([&] {
            return view.console()
                .take_first([](const ConsoleRecord& record) {
                    return record.message.find("blocked by CORS policy") != std::string::npos;
                })
                .has_value();
        });
        if (!is_told || other.requests("/secret").empty())
            end_scenario(false, "the console says why the page learns nothing");
    }
    view->destroy();
    return findings;
}

void sandboxed()
{
    become_ordinary();
    opts::SANDBOXED = true;
    const Findings findings = explore();
    end_scenario(findings.own == "\"own\"" && findings.secret.starts_with("threw TypeError")
                     && !findings.seccomp.empty()
                     && findings.seccomp.find_first_not_of("2 ") == std::string::npos,
                 "the page is guarded: it learns " + findings.secret + ", its filter is "
                     + findings.seccomp);
}

void unsandboxed()
{
    const Findings findings = explore();
    end_scenario(findings.own == "\"own\"" && findings.secret == "\"secret\""
                     && !findings.seccomp.empty()
                     && findings.seccomp.find_first_not_of("0 ") == std::string::npos,
                 "the page is not guarded: it learns " + findings.secret + ", its filter is "
                     + findings.seccomp);
}

/** The rules of SANDBOXED without the sandbox itself, which root could not have. */
void keep_origins_apart()
{
    opts::SANDBOXED = true;
    setenv("QTWEBENGINE_DISABLE_SANDBOX", "1", 1);
}

// What a frame of a foreign site can access.
constexpr auto FOREIGN_FRAME = R"(<script>
const attempt = act => { try { return String(act()); } catch (error) { return error.name; } };
const channel = window.qt && window.qt.webChannelTransport;
parent.postMessage({
    objects: attempt(() => window.$g),
    channel: attempt(() => channel),
    objectsOfThePage: attempt(() => parent.$g),
    documentOfThePage: attempt(() => parent.document.title),
}, "*");
onmessage = () => {
    try { top.location = "file:///etc/passwd"; } catch {}
    setTimeout(() => parent.postMessage("tried", "*"), 100);
};
</script>)";

/** What a frame of another site finds in a page that has objects, as JSON. */
std::string explore_from_a_frame()
{
    HttpServer server;
    server.serve("/frame", html(FOREIGN_FRAME));
    server.serve("/",
                 html("<script>window.heard = []; onmessage = event => heard.push(event.data);"
                      "addEventListener('godot.ready', () => {"
                      " const frame = document.createElement('iframe');"
                      " frame.src = '"
                      + server.url("/frame", "localhost")
                      + "'; document.documentElement.append(frame); });</script>"));
    HostObject object("game");
    object.property("health", db::VariantTypeStd::INT, db::ValueStd(100));
    HostWebView view;
    view->webchannel_registerObject("game", &object.record());
    require(view.open(server.url("/")), "the page loads");
    require(view.draw_until([&] { return view.evaluate("heard.length") == "1"; }),
            "the frame speaks");
    const std::string found = view.evaluate("heard[0]");
    view.run("frames[0].postMessage('try', '*')");
    require(view.draw_until([&] { return view.evaluate("heard[1]") == "\"tried\""; }),
            "the page is still there, and not on the disk");
    view->destroy();
    return found;
}

void foreign_frame_with_rules()
{
    keep_origins_apart();
    const std::string found = explore_from_a_frame();
    end_scenario(
        found
            == R"({"objects":"undefined","channel":"undefined",)"
               R"("objectsOfThePage":"SecurityError","documentOfThePage":"SecurityError"})",
        "a foreign frame reaches nothing: " + found);
}

void foreign_frame_without_rules()
{
    const std::string found = explore_from_a_frame();
    end_scenario(found.find(R"("objects":"undefined","channel":"undefined")") != std::string::npos
                     && found.find(R"("objectsOfThePage":"[object Object]")") != std::string::npos,
                 "a foreign frame has nothing of its own, but all that the page has: " + found);
}

void pack_goes_to_the_disk()
{
    keep_origins_apart();
    ResourcePack pack({{"/index.html", "<title>pack</title>"}});
    HostWebView view;
    require(view.open("res://pack/"), "the page loads");
    allow_messages_matching("the page tried to navigate to a local file; refused");
    for (const std::string disk : {"file:///etc/passwd", "qrc:/Web/page_scripts/full_screen.js"}) {
        view.run("location = '" + disk + "'");
        const std::string place =
            view.evaluate("new Promise(done => setTimeout(() => done(location.href), 300))");
        require(place == "\"res://pack/\"", "the page stays, not at " + place);
    }
    view->destroy();
    end_scenario(true, "the pages of the pack stay in the pack");
}

const Scenarios SCENARIOS = {
    {"foreign_frame_with_rules", foreign_frame_with_rules},
    {"foreign_frame_without_rules", foreign_frame_without_rules},
    {"pack_goes_to_the_disk", pack_goes_to_the_disk},
    {"sandboxed", sandboxed},
    {"unsandboxed", unsandboxed},
};

// --- The tests, outside these processes --------------------------------------------------------

class Sandbox : public testing::Test {
protected:
    Sandbox()
    {
        // Other users cannot enter the temporary folder of the tests.
        std::string path = "/tmp/marlune-home-XXXXXX";
        EXPECT_TRUE(mkdtemp(path.data()));
        home = path;
        EXPECT_TRUE(geteuid() != 0 || chown(path.c_str(), SOMEBODY, SOMEBODY) == 0);
        for (const char* const name : {"HOME", "XDG_RUNTIME_DIR", "TMPDIR"}) {
            former[name] = std::getenv(name) ? std::getenv(name) : "";
            setenv(name, path.c_str(), 1);
        }
    }
    ~Sandbox() override
    {
        for (const auto& [name, value] : former)
            setenv(name.c_str(), value.c_str(), 1);
        std::error_code ignored;
        std::filesystem::remove_all(home, ignored);
    }

    std::filesystem::path home;
    std::map<std::string, std::string> former;
};

TEST_F(Sandbox, guards_pages_and_keeps_origins_apart)
{
    for (const Need& need : NEEDS) {
        if (!is_met(need))
            GTEST_SKIP() << "this system gives ordinary users no " << need.name;
    }
    EXPECT_TRUE(ends_cleanly("sandboxed"));
}

TEST_F(Sandbox, is_off_by_default)
{
    EXPECT_TRUE(ends_cleanly("unsandboxed"));
}

TEST(ForeignFrame, reaches_nothing_of_a_page_with_objects)
{
    EXPECT_TRUE(ends_cleanly("foreign_frame_with_rules"));
}

TEST(ForeignFrame, reaches_all_that_the_page_has_by_default)
{
    EXPECT_TRUE(ends_cleanly("foreign_frame_without_rules"));
}

TEST(Pack, does_not_lead_to_the_disk)
{
    EXPECT_TRUE(ends_cleanly("pack_goes_to_the_disk"));
}

}  // namespace

}  // namespace marlune::test
