#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

struct ConsoleRecord {
    int level = 0;
    std::string message;
    int line_number = 0;
    std::string source_id;
    std::thread::id thread;
};

/** Console messages of a view in the order of their arrival. For any thread. */
class ConsoleLog {
public:
    void add(ConsoleRecord record);
    std::vector<ConsoleRecord> take();
    std::vector<std::string> take_messages();

    /** Removes and returns the first record for which `matches` is true. The others stay. */
    std::optional<ConsoleRecord>
    take_first(const std::function<bool(const ConsoleRecord&)>& matches);

private:
    std::mutex mutex_;
    std::vector<ConsoleRecord> records_;
};

}  // namespace marlune::test
