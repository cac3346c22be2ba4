#include "support/web/http_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace marlune::test {

namespace {

constexpr std::string_view HEAD_END = "\r\n\r\n";

std::string lower(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

std::string base64(std::string_view bytes)
{
    constexpr auto digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    uint32_t buffer = 0;
    int bits = 0;
    for (const unsigned char byte : bytes) {
        buffer = buffer << 8 | byte;
        for (bits += 8; bits >= 6; bits -= 6)
            text += digits[buffer >> (bits - 6) & 63];
    }
    if (bits > 0)
        text += digits[buffer << (6 - bits) & 63];
    text.resize((text.size() + 3) / 4 * 4, '=');
    return text;
}

/** Appends the received bytes; returns false if the client sends no more. */
bool receive(int socket, std::string& text)
{
    char buffer[16384];
    const ssize_t count = recv(socket, buffer, sizeof(buffer), 0);
    if (count <= 0)
        return false;
    text.append(buffer, size_t(count));
    return true;
}

/** Returns false if the client has closed the connection. */
bool send_all(int socket, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = send(socket, text.data(), text.size(), MSG_NOSIGNAL);
        if (count < 0)
            return false;
        text.remove_prefix(size_t(count));
    }
    return true;
}

void add_header(HttpRequest& request, const std::string& line)
{
    const size_t colon = line.find(':');
    if (colon == std::string::npos)
        return;
    const size_t value = line.find_first_not_of(" \t", colon + 1);
    std::string& known = request.headers[lower(line.substr(0, colon))];
    known += known.empty() ? "" : ", ";
    known += value == std::string::npos ? "" : line.substr(value);
}

HttpRequest parse_head(const std::string& head)
{
    HttpRequest request;
    std::istringstream lines(head);
    lines >> request.method >> request.target;
    std::string line;
    std::getline(lines, line);  // the protocol's version
    while (std::getline(lines, line)) {
        if (line.ends_with('\r'))
            line.pop_back();
        add_header(request, line);
    }
    return request;
}

/** Returns nothing if the client closes the connection before the end of its request. */
std::optional<HttpRequest> read_request(int socket)
{
    std::string text;
    size_t head_size = 0;
    while ((head_size = text.find(HEAD_END)) == std::string::npos) {
        if (!receive(socket, text))
            return std::nullopt;
    }
    HttpRequest request = parse_head(text.substr(0, head_size));
    const size_t body_size = std::strtoull(request.header("content-length").c_str(), nullptr, 10);
    request.body = text.substr(head_size + HEAD_END.size());
    while (request.body.size() < body_size) {
        if (!receive(socket, request.body))
            return std::nullopt;
    }
    return request;
}

bool names_its_type(const HttpReply& reply)
{
    return std::ranges::any_of(
        reply.headers, [](const auto& header) { return lower(header.first) == "content-type"; });
}

/** A reply whose end is held back has no length: it ends with the connection. */
std::string head_of(const HttpReply& reply)
{
    // Clients use the number; the text is for people.
    std::string head = "HTTP/1.1 " + std::to_string(reply.status) + " -\r\nConnection: close\r\n";
    if (reply.hold != HttpReply::END)
        head += "Content-Length: " + std::to_string(reply.body.size()) + "\r\n";
    if (!names_its_type(reply))
        head += "Content-Type: text/html; charset=utf-8\r\n";
    for (const auto& [name, value] : reply.headers)
        head += name + ": " + value + "\r\n";
    return head + "\r\n";
}

[[noreturn]] void fail(const char* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_in free_local_address()
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int make_listener()
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = free_local_address();
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        fail("cannot bind a server's socket");
    if (listen(listener, SOMAXCONN) != 0)
        fail("cannot listen on a server's socket");
    return listener;
}

uint16_t port_of(int listener)
{
    sockaddr_in address = {};
    socklen_t size = sizeof(address);
    if (getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        fail("cannot read a server's port");
    return ntohs(address.sin_port);
}

}  // namespace

std::string HttpRequest::path() const
{
    return target.substr(0, target.find('?'));
}

std::string HttpRequest::header(const std::string& name) const
{
    const auto found = headers.find(name);
    return found == headers.end() ? std::string() : found->second;
}

HttpReply html(const std::string& body)
{
    return {.body = body};
}

HttpReply redirect_to(const std::string& location, int status)
{
    return {.status = status, .headers = {{"Location", location}}};
}

HttpHandler behind_password(const std::string& user, const std::string& password, HttpReply reply)
{
    return [expected = "Basic " + base64(user + ":" + password),
            reply = std::move(reply)](const HttpRequest& request) {
        if (request.header("authorization") == expected)
            return reply;
        return HttpReply{.status = 401, .headers = {{"WWW-Authenticate", "Basic realm=\"test\""}}};
    };
}

HttpServer::HttpServer() : listener_(make_listener()), port_(port_of(listener_))
{
    accepting_thread_ = std::thread([this] { accept_clients(); });
}

HttpServer::~HttpServer()
{
    {
        const std::lock_guard lock(mutex_);
        is_ending_ = true;
        // Wakes the threads that wait for a client. Each one closes its socket itself.
        for (const int socket : open_sockets_)
            shutdown(socket, SHUT_RDWR);
    }
    changed_.notify_all();
    shutdown(listener_, SHUT_RDWR);
    accepting_thread_.join();
    close(listener_);
    for (std::thread& thread : client_threads_)  // no thread adds to them any more
        thread.join();
}

std::string HttpServer::url(const std::string& path, const std::string& host) const
{
    return "http://" + host + ":" + std::to_string(port_) + path;
}

void HttpServer::serve(const std::string& path, HttpReply reply)
{
    serve(path, [reply = std::move(reply)](const HttpRequest&) { return reply; });
}

void HttpServer::serve(const std::string& path, HttpHandler handler)
{
    const std::lock_guard lock(mutex_);
    handlers_[path] = std::move(handler);
}

void HttpServer::release()
{
    {
        const std::lock_guard lock(mutex_);
        ++round_;
    }
    changed_.notify_all();
}

std::vector<HttpRequest> HttpServer::requests() const
{
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<HttpRequest> HttpServer::requests(const std::string& path) const
{
    std::vector<HttpRequest> result = requests();
    std::erase_if(result, [&](const HttpRequest& request) { return request.path() != path; });
    return result;
}

bool HttpServer::wait_for_request(const std::string& path, size_t count,
                                  std::chrono::milliseconds cap) const
{
    const auto is_asked_for = [&](const HttpRequest& request) { return request.path() == path; };
    std::unique_lock lock(mutex_);
    return changed_.wait_for(
        lock, cap, [&] { return size_t(std::ranges::count_if(requests_, is_asked_for)) >= count; });
}

void HttpServer::accept_clients()
{
    for (;;) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0 && errno == ECONNABORTED)
            continue;  // the client has closed its connection before its turn
        if (socket < 0 || !add_client(socket))
            return;
    }
}

/** Returns false if the server is ending. */
bool HttpServer::add_client(int socket)
{
    const std::lock_guard lock(mutex_);
    if (is_ending_) {
        close(socket);
        return false;
    }
    open_sockets_.insert(socket);
    client_threads_.emplace_back([this, socket] { attend(socket); });
    return true;
}

void HttpServer::attend(int socket)
{
    converse(socket);
    const std::lock_guard lock(mutex_);
    open_sockets_.erase(socket);
    close(socket);  // under the lock: another socket may get the number at once
}

void HttpServer::converse(int socket)
{
    const std::optional<HttpRequest> request = read_request(socket);
    if (!request)
        return;
    const Answer answer = take(*request);
    const HttpReply reply = answer.handler ? answer.handler(*request) : HttpReply{.status = 404};
    send_reply(socket, *request, reply, answer.round);
}

/**
 * Logs a request. The round is read under the same lock, so it cannot end before wait_for_request()
 * sees the request.
 */
HttpServer::Answer HttpServer::take(const HttpRequest& request)
{
    Answer answer;
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(request);
        answer.round = round_;
        if (const auto found = handlers_.find(request.path()); found != handlers_.end())
            answer.handler = found->second;
    }
    changed_.notify_all();
    return answer;
}

void HttpServer::send_reply(int socket, const HttpRequest& request, const HttpReply& reply,
                            uint64_t round)
{
    if (!pause(reply.delay))
        return;
    if (reply.hold == HttpReply::ALL && !wait_for_release(round))
        return;
    const bool has_body = request.method != "HEAD";
    if (!send_all(socket, head_of(reply) + (has_body ? reply.body : "")))
        return;
    if (reply.hold == HttpReply::END)
        wait_for_release(round);
}

/** Returns false if the server is ending. */
bool HttpServer::pause(std::chrono::milliseconds time)
{
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, time, [this] { return is_ending_; });
}

/** Returns false if the server is ending. */
bool HttpServer::wait_for_release(uint64_t round)
{
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return is_ending_ || round_ > round; });
    return !is_ending_;
}

}  // namespace marlune::test
