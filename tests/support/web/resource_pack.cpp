#include "support/web/resource_pack.h"

#include "support/library.h"

#include <gtest/gtest.h>

namespace marlune::test {

ServingResources::ServingResources(Callback callback)
{
    start_library_with_device();
    serve(std::move(callback));
}

ServingResources::~ServingResources()
{
    serve({});
}

void ServingResources::serve(Callback callback)
{
    // A facade without a view sets the callback of all views.
    MView().set_func_resource_file(std::move(callback));
}

ResourcePack::ResourcePack(std::initializer_list<File> files)
    : serving_([this](const std::string& path, bool& flag, uint64_t& size) {
          return serve(path, flag, size);
      })
{
    for (const auto& [path, content] : files)
        put(path, content);
}

void ResourcePack::put(const std::string& path, std::string content)
{
    const std::lock_guard lock(mutex_);
    files_[path] = &contents_.emplace_back(std::move(content));
}

std::vector<std::string> ResourcePack::asked_for()
{
    const std::lock_guard lock(mutex_);
    return asked_for_;
}

uint8_t* ResourcePack::serve(const std::string& path, bool& flag, uint64_t& size)
{
    const std::lock_guard lock(mutex_);
    EXPECT_FALSE(flag);
    EXPECT_EQ(size, 0u);
    flag = true;  // the library ignores it
    asked_for_.push_back(path);
    const auto file = files_.find(path);
    if (file == files_.end())
        return &no_file_;  // with a size of 0 the library ignores the pointer
    size = file->second->size();
    return reinterpret_cast<uint8_t*>(file->second->data());
}

}  // namespace marlune::test
