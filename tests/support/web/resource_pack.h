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
 * Serves the "res" scheme of all views by a callback, from its making to its end. Starts the library when
 * that has not been done. Make it before the views, so that it outlives them: a request that nothing
 * serves is a warning, which fails a test. One at a time: the last one made counts.
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
 * A host's packed files, served while it lives.
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
    using File = std::pair<std::string, std::string>;  // its path and its content

    explicit ResourcePack(std::initializer_list<File> files = {});

    /** Adds a file or replaces one. */
    void put(const std::string& path, std::string content);

    /** The paths that were asked for, in the order of asking. */
    std::vector<std::string> asked_for();

private:
    uint8_t* serve(const std::string& path, bool& flag, uint64_t& size);

    std::mutex mutex_;
    std::list<std::string> contents_;  // all that there ever were: the library may be copying one
    std::map<std::string, std::string*> files_;
    std::vector<std::string> asked_for_;
    uint8_t no_file_ = 0;
    ServingResources serving_;
};

}  // namespace marlune::test
