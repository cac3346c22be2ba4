// The tests' own web server, checked with plain sockets, because the tests of web views rely on it.

#include "support/web/http_server.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::string_view ASK_FOR_HELD = "GET /held HTTP/1.1\r\n\r\n";
constexpr auto MANY = 20;

/** A client whose destructor closes the connection. */
class Client {
public:
    explicit Client(const HttpServer& server) : socket_(socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(server.port());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const auto* const any = reinterpret_cast<const sockaddr*>(&address);
        EXPECT_EQ(connect(socket_, any, sizeof(address)), 0);
    }
    ~Client() { close(socket_); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void say(std::string_view text)
    {
        EXPECT_EQ(send(socket_, text.data(), text.size(), MSG_NOSIGNAL), ssize_t(text.size()));
    }

    /**
     * The bytes that arrive within `time`: nullopt when none do, "" at the end of the connection.
     */
    std::optional<std::string> hear(std::chrono::milliseconds time = 10s)
    {
        pollfd descriptor = {socket_, POLLIN, 0};
        if (poll(&descriptor, 1, int(time.count())) != 1)
            return std::nullopt;
        char buffer[65536];
        const ssize_t count = recv(socket_, buffer, sizeof(buffer), 0);
        return std::string(buffer, count > 0 ? size_t(count) : 0);
    }

    /** All bytes that arrive until the server closes the connection. */
    std::string hear_all()
    {
        std::string all;
        for (;;) {
            const std::optional<std::string> part = hear();
            if (!part)
                ADD_FAILURE() << "the server has not closed the connection after: " << all;
            if (!part || part->empty())
                return all;
            all += *part;
        }
    }

    std::string ask(std::string_view request)
    {
        say(request);
        return hear_all();
    }

private:
    int socket_;
};

std::string ask(const HttpServer& server, const std::string& request)
{
    return Client(server).ask(request);
}

std::string get(const HttpServer& server, const std::string& target)
{
    return ask(server, "GET " + target + " HTTP/1.1\r\nHost: test\r\n\r\n");
}

std::string body_of(const std::string& reply)
{
    return reply.substr(reply.find("\r\n\r\n") + 4);
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(HttpServer, answers_with_what_is_served)
{
    HttpServer server;
    server.serve("/", html("<p>hello"));
    EXPECT_EQ(get(server, "/"),
              "HTTP/1.1 200 -\r\nConnection: close\r\nContent-Length: 8\r\n"
              "Content-Type: text/html; charset=utf-8\r\n\r\n<p>hello");
}

TEST(HttpServer, sends_the_status_and_the_headers_of_a_reply)
{
    HttpServer server;
    server.serve(
        "/",
        {.status = 503,
         .headers = {{"content-type", "text/css"}, {"Set-Cookie", "a=1"}, {"Set-Cookie", "b=2"}}});
    const std::string reply = get(server, "/");
    EXPECT_TRUE(reply.starts_with("HTTP/1.1 503 "));
    EXPECT_TRUE(contains(reply, "\r\ncontent-type: text/css\r\n"));
    EXPECT_FALSE(contains(reply, "text/html"))
        << "a type of the reply's own must replace the default";
    EXPECT_TRUE(contains(reply, "\r\nSet-Cookie: a=1\r\nSet-Cookie: b=2\r\n"));
    EXPECT_EQ(body_of(reply), "");
}

TEST(HttpServer, answers_404_for_what_is_not_served)
{
    HttpServer server;
    server.serve("/here", html("here"));
    EXPECT_TRUE(get(server, "/").starts_with("HTTP/1.1 404 "));
    EXPECT_TRUE(get(server, "/here/there").starts_with("HTTP/1.1 404 "));
}

TEST(HttpServer, finds_a_path_whatever_its_query)
{
    HttpServer server;
    server.serve("/page", html("page"));
    EXPECT_EQ(body_of(get(server, "/page?a=b?c")), "page");
    ASSERT_EQ(server.requests("/page").size(), 1u);
    EXPECT_EQ(server.requests("/page")[0].target, "/page?a=b?c");
}

TEST(HttpServer, replaces_what_is_served)
{
    HttpServer server;
    server.serve("/", html("old"));
    server.serve("/", html("new"));
    EXPECT_EQ(body_of(get(server, "/")), "new");
}

TEST(HttpServer, logs_all_of_a_request)
{
    HttpServer server;
    ask(server,
        "POST /form?a=1 HTTP/1.1\r\nHOST: test\r\nCookie:  a=1; b=2\r\nAccept: x\r\nAccept: y\r\n"
        "Empty:\r\nContent-Length: 11\r\n\r\nbody\r\n\r\nbody");
    ASSERT_EQ(server.requests().size(), 1u);
    const HttpRequest request = server.requests()[0];
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.target, "/form?a=1");
    EXPECT_EQ(request.path(), "/form");
    EXPECT_EQ(request.header("host"), "test");
    EXPECT_EQ(request.header("cookie"), "a=1; b=2");
    EXPECT_EQ(request.header("accept"), "x, y");
    EXPECT_EQ(request.header("empty"), "");
    EXPECT_EQ(request.header("missing"), "");
    EXPECT_TRUE(request.headers.contains("empty"));
    EXPECT_FALSE(request.headers.contains("missing"));
    EXPECT_EQ(request.body, "body\r\n\r\nbody");
}

TEST(HttpServer, accepts_a_request_that_arrives_in_pieces)
{
    HttpServer server;
    server.serve("/", [](const HttpRequest& request) { return html(request.body); });
    Client client(server);
    for (const char* piece : {"PUT / HT", "TP/1.1\r\nContent-Len", "gth: 6\r\n\r", "\nabc"}) {
        client.say(piece);
        EXPECT_EQ(client.hear(20ms), std::nullopt) << "after " << piece;
    }
    client.say("def");
    EXPECT_EQ(body_of(client.hear_all()), "abcdef");
}

TEST(HttpServer, asks_a_handler_for_each_reply)
{
    HttpServer server;
    server.serve("/", [count = std::make_shared<int>(0)](const HttpRequest& request) {
        return html(request.method + std::to_string(++*count));
    });
    EXPECT_EQ(body_of(get(server, "/")), "GET1");
    EXPECT_EQ(body_of(ask(server, "POST / HTTP/1.1\r\n\r\n")), "POST2");
}

TEST(HttpServer, answers_a_head_request_with_the_length_alone)
{
    HttpServer server;
    server.serve("/", html("12345"));
    const std::string reply = ask(server, "HEAD / HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(contains(reply, "\r\nContent-Length: 5\r\n"));
    EXPECT_EQ(body_of(reply), "");
}

TEST(HttpServer, redirects)
{
    HttpServer server;
    server.serve("/old", redirect_to("/new"));
    server.serve("/older", redirect_to(server.url("/new", "localhost"), 308));
    EXPECT_TRUE(contains(get(server, "/old"), "\r\nLocation: /new\r\n"));
    EXPECT_TRUE(get(server, "/old").starts_with("HTTP/1.1 302 "));
    EXPECT_TRUE(get(server, "/older").starts_with("HTTP/1.1 308 "));
    EXPECT_TRUE(contains(get(server, "/older"), "Location: http://localhost:"));
}

TEST(HttpServer, accepts_only_the_right_password)
{
    HttpServer server;
    server.serve("/", behind_password("Aladdin", "open sesame", html("treasure")));
    const std::string refusal = get(server, "/");
    EXPECT_TRUE(refusal.starts_with("HTTP/1.1 401 "));
    EXPECT_TRUE(contains(refusal, "\r\nWWW-Authenticate: Basic realm="));

    const auto with = [](const std::string& credentials) {
        return "GET / HTTP/1.1\r\nAuthorization: Basic " + credentials + "\r\n\r\n";
    };
    EXPECT_EQ(body_of(ask(server, with("QWxhZGRpbjpvcGVuIHNlc2FtZQ=="))), "treasure");
    EXPECT_TRUE(ask(server, with("QWxhZGRpbjpvcGVu")).starts_with("HTTP/1.1 401 "));

    server.serve("/", behind_password("a", "b", html("1")));  // three bytes: no padding
    EXPECT_EQ(body_of(ask(server, with("YTpi"))), "1");
    server.serve("/", behind_password("a", "bc", html("2")));
    EXPECT_EQ(body_of(ask(server, with("YTpiYw=="))), "2");
    server.serve("/", behind_password("a", "bcd", html("3")));
    EXPECT_EQ(body_of(ask(server, with("YTpiY2Q="))), "3");
}

TEST(HttpServer, sends_a_delayed_reply_not_before_its_time)
{
    HttpServer server;
    server.serve("/", {.body = "late", .delay = 80ms});
    const auto begin = Clock::now();
    EXPECT_EQ(body_of(get(server, "/")), "late");
    EXPECT_GE(Clock::now() - begin, 80ms);
}

TEST(HttpServer, holds_a_whole_reply_until_it_is_released)
{
    HttpServer server;
    server.serve("/held", {.body = "done", .hold = HttpReply::ALL});
    Client client(server);
    client.say(ASK_FOR_HELD);
    ASSERT_TRUE(server.wait_for_request("/held"));
    EXPECT_EQ(client.hear(50ms), std::nullopt);
    server.release();
    EXPECT_EQ(body_of(client.hear_all()), "done");
}

TEST(HttpServer, holds_the_end_of_a_reply_until_it_is_released)
{
    HttpServer server;
    server.serve("/held", {.body = "first part", .hold = HttpReply::END});
    Client client(server);
    client.say(ASK_FOR_HELD);
    const std::optional<std::string> reply = client.hear();
    ASSERT_TRUE(reply);
    EXPECT_EQ(body_of(*reply), "first part");
    EXPECT_FALSE(contains(*reply, "Content-Length"))
        << "a client would consider the reply complete";
    EXPECT_EQ(client.hear(50ms), std::nullopt);
    server.release();
    EXPECT_EQ(client.hear_all(), "");
}

TEST(HttpServer, releases_each_time_what_has_been_asked_for_by_then)
{
    HttpServer server;
    server.serve("/held", {.body = "done", .hold = HttpReply::ALL});
    for (size_t round = 1; round <= MANY; ++round) {
        Client client(server);
        client.say(ASK_FOR_HELD);
        ASSERT_TRUE(server.wait_for_request("/held", round));
        server.release();  // as early as possible: the reply may not be held yet
        ASSERT_EQ(body_of(client.hear_all()), "done");
    }
    Client late(server);
    late.say(ASK_FOR_HELD);
    ASSERT_TRUE(server.wait_for_request("/held", MANY + 1));
    EXPECT_EQ(late.hear(50ms), std::nullopt)
        << "a request that arrived after the release was released";
}

TEST(HttpServer, reports_whether_a_request_has_come)
{
    HttpServer server;
    EXPECT_FALSE(server.wait_for_request("/", 1, 20ms));
    get(server, "/?x");
    EXPECT_TRUE(server.wait_for_request("/", 1, 0ms));
    EXPECT_FALSE(server.wait_for_request("/", 2, 20ms));
    EXPECT_FALSE(server.wait_for_request("/other", 1, 20ms));
}

TEST(HttpServer, wakes_a_thread_that_waits_for_a_request)
{
    HttpServer server;
    std::jthread client([&] { get(server, "/"); });
    EXPECT_TRUE(server.wait_for_request("/"));
}

TEST(HttpServer, serves_several_clients_at_once)
{
    HttpServer server;
    server.serve("/held", {.body = "done", .hold = HttpReply::ALL});
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < MANY; ++i) {
        clients.push_back(std::make_unique<Client>(server));
        clients.back()->say(ASK_FOR_HELD);
    }
    ASSERT_TRUE(server.wait_for_request("/held", MANY))
        << "a held request keeps the others waiting";
    server.release();
    for (const auto& client : clients)
        EXPECT_EQ(body_of(client->hear_all()), "done");
}

TEST(HttpServer, sends_a_body_of_several_megabytes)
{
    const std::string body(8 << 20, 'x');
    HttpServer server;
    server.serve("/", html(body));
    EXPECT_TRUE(body_of(get(server, "/")) == body);
}

TEST(HttpServer, is_a_second_origin_beside_another_one)
{
    HttpServer one, other;
    one.serve("/", html("one"));
    other.serve("/", html("other"));
    EXPECT_NE(one.url("/"), other.url("/"));
    EXPECT_EQ(one.url("/a?b"), "http://127.0.0.1:" + std::to_string(one.port()) + "/a?b");
    EXPECT_EQ(body_of(get(one, "/")), "one");
    EXPECT_EQ(body_of(get(other, "/")), "other");
    EXPECT_EQ(one.requests().size(), 1u);
}

TEST(HttpServer, survives_clients_that_send_nonsense_or_leave)
{
    HttpServer server;
    server.serve("/large", html(std::string(8 << 20, 'x')));
    server.serve("/", html("alive"));
    Client(server).say("");
    Client(server).say("GET / HT");
    Client(server).say("POST / HTTP/1.1\r\nContent-Length: 100\r\n\r\nhalf");
    Client(server).say("GET /large HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(ask(server, "\r\n\r\n").starts_with("HTTP/1.1 404 "));
    EXPECT_TRUE(ask(server, "GET\r\nno colon\r\n: no name\r\n\r\n").starts_with("HTTP/1.1 404 "));
    EXPECT_EQ(body_of(get(server, "/")), "alive");
}

TEST(HttpServer, ends_at_once_with_connections_that_are_open)
{
    auto server = std::make_unique<HttpServer>();
    server->serve("/held", {.hold = HttpReply::ALL});
    server->serve("/cut", {.body = "first part", .hold = HttpReply::END});
    server->serve("/late", {.delay = 1h});
    server->serve("/large", html(std::string(64 << 20, 'x')));
    std::vector<std::unique_ptr<Client>> clients;
    for (const std::string request :
         {"", "GET / HT", "GET /held HTTP/1.1\r\n\r\n", "GET /cut HTTP/1.1\r\n\r\n",
          "GET /late HTTP/1.1\r\n\r\n", "GET /large HTTP/1.1\r\n\r\n"}) {
        clients.push_back(std::make_unique<Client>(*server));
        clients.back()->say(request);
    }
    for (const char* path : {"/held", "/cut", "/late", "/large"})
        ASSERT_TRUE(server->wait_for_request(path));

    const auto begin = Clock::now();
    server.reset();
    EXPECT_LT(Clock::now() - begin, 5s);
    for (const auto& client : clients)
        client->hear_all();
}

}  // namespace marlune::test
