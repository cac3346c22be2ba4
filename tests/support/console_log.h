#pragma once

#include <mutex>
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

/** Console messages of a view in the order in which they came. For any thread. */
class ConsoleLog {
public:
    void add(ConsoleRecord record);
    std::vector<ConsoleRecord> take();
    std::vector<std::string> take_messages();

private:
    std::mutex mutex_;
    std::vector<ConsoleRecord> records_;
};

}  // namespace marlune::test
