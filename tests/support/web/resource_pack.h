#pragma once

#include <marlune/mview.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace marlune::test {

/**
 * Serves the "res" scheme of all views with a callback, from its construction to its destruction.
 * Starts the library if it is not running. Create it before the views, so that it outlives them: a
 * request without a callback logs a warning, which fails a test. Only one at a time: the last one
 * counts.
 */
class ServingResources {
public:
    using Callback = std::function<uint8_t*(std::string path, bool& flag, uint64_t& size)>;

    explicit ServingResources(Callback callback);
    ~ServingResources();
    ServingResources(const ServingResources&) = delete;
    ServingResources& operator=(const ServingResources&) = delete;

    /** Replaces the callback. */
    void serve(Callback callback);
};

/**
 * A pack of a host's files, served while this object lives.
 *
 * @code
 * ResourcePack pack({{"/index.html", "<p>hello"}});
 * HostWebView view;
 * ASSERT_TRUE(view.open("res://pack/"));
 * @endcode
 *
 * For any thread.
 */
class ResourcePack {
public:
    using File = std::pair<std::string, std::string>;  // path and content

    explicit ResourcePack(std::initializer_list<File> files = {});

    /** Adds a file or replaces one. */
    void put(const std::string& path, std::string content);

    /** The requested paths, in the order of the requests. */
    std::vector<std::string> asked_for();

private:
    uint8_t* serve(const std::string& path, bool& flag, uint64_t& size);

    std::mutex mutex_;
    std::list<std::string> contents_;  // also replaced ones: the library may be copying one
    std::map<std::string, std::string*> files_;
    std::vector<std::string> asked_for_;
    uint8_t no_file_ = 0;
    ServingResources serving_;
};

}  // namespace marlune::test
