#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace marlune::test {

/** The request of a client. */
struct HttpRequest {
    std::string method;
    std::string target;  // the path, with its query
    std::string body;

    /** Headers by their names in lower case; the values of repeated ones are joined by ", ". */
    std::map<std::string, std::string> headers;

    /** The target without its query. */
    std::string path() const;

    /** Returns "" if there is no such header; `name` is in lower case. */
    std::string header(const std::string& name) const;
};

/** The reply of the server. The content is HTML unless a Content-Type says otherwise. */
struct HttpReply {
    enum Hold {
        NOTHING,
        ALL,  // sends no byte before release()
        END,  // sends headers and body at once, but ends the reply only at release()
    };

    int status = 200;
    std::vector<std::pair<std::string, std::string>> headers = {};
    std::string body = {};
    std::chrono::milliseconds delay{0};  // before the first byte
    Hold hold = NOTHING;
};

using HttpHandler = std::function<HttpReply(const HttpRequest& request)>;

HttpReply html(const std::string& body);
HttpReply redirect_to(const std::string& location, int status = 302);

/** Answers clients that send the password with `reply`, and asks all others for the password. */
HttpHandler behind_password(const std::string& user, const std::string& password, HttpReply reply);

/**
 * A web server on 127.0.0.1 for a test's pages, with a free port of its own: a second server is a
 * second origin. It answers 404 for a path that is not served. One request a connection.
 *
 * @code
 * HttpServer server;
 * server.serve("/", html("<script src=slow.js></script>"));
 * server.serve("/slow.js", {.hold = HttpReply::ALL});
 * ASSERT_TRUE(...);  // a view loads server.url("/")
 * EXPECT_TRUE(server.wait_for_request("/slow.js"));
 * server.release();
 * @endcode
 *
 * For any thread. The destructor does not wait for clients: it closes open connections.
 */
class HttpServer {
public:
    HttpServer();
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /**
     * With "localhost" as the host, the URL is that of another site on the same server: cookies do
     * not distinguish ports.
     */
    std::string url(const std::string& path, const std::string& host = "127.0.0.1") const;
    uint16_t port() const { return port_; }

    /**
     * Serves `path`, whatever the query, and replaces the former reply. The server calls a handler
     * on its own threads, on several at once if several clients send requests; the handler must not
     * throw.
     */
    void serve(const std::string& path, HttpReply reply);
    void serve(const std::string& path, HttpHandler handler);

    /** Continues all replies that are held now. Replies to later requests are held again. */
    void release();

    /** All requests so far, or those for `path`, in the order of their arrival. */
    std::vector<HttpRequest> requests() const;
    std::vector<HttpRequest> requests(const std::string& path) const;

    /** Waits until clients have requested `path` `count` times in all. */
    bool wait_for_request(const std::string& path, size_t count = 1,
                          std::chrono::milliseconds cap = std::chrono::seconds(10)) const;

private:
    struct Answer {
        HttpHandler handler;
        uint64_t round = 0;  // a held reply waits for the next round
    };

    void accept_clients();
    bool add_client(int socket);
    void attend(int socket);
    void converse(int socket);
    Answer take(const HttpRequest& request);
    void send_reply(int socket, const HttpRequest& request, const HttpReply& reply, uint64_t round);
    bool pause(std::chrono::milliseconds time);
    bool wait_for_release(uint64_t round);

    int listener_ = -1;
    uint16_t port_ = 0;

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::map<std::string, HttpHandler> handlers_;
    std::vector<HttpRequest> requests_;
    uint64_t round_ = 0;
    bool is_ending_ = false;
    std::set<int> open_sockets_;
    std::vector<std::thread> client_threads_;

    std::thread accepting_thread_;
};

}  // namespace marlune::test
