// Tasks as text and as names of files, and addresses of queues.
#include <algorithm>

#include "apps/velagnss/jobs/Task.h"
#include "apps/velagnss/jobs/TaskQueue.h"
#include "tests/Cases.h"

namespace {

using Host::S_Task;

S_Task Example() {
  return {"/data/r\xC3\xB6m\xFF.bin", "0123456789abcdef", {1'000, 2'000}, true, 5, {"--msg=GGA:10", "--acks"}};
}

TEST(Task, TextReadsBackAsTheSameTask) {
  for (const Host::S_ByteRange range : {Host::S_ByteRange{1'000, 2'000}, Host::S_ByteRange{}}) {
    S_Task task = Example();
    task.range = range;
    const std::optional<S_Task> read = Host::ReadTask(Host::TaskText(task));
    ASSERT_TRUE(read);
    EXPECT_EQ(Host::TaskText(*read), Host::TaskText(task));
    EXPECT_EQ(read->input, task.input) << "bytes of any encoding";
    EXPECT_EQ(read->range.end, range.end);
    EXPECT_EQ(read->options, task.options);
  }
}

TEST(Task, KeyDependsOnTheWorkAndNotOnTheTries) {
  S_Task task = Example();
  const std::string key = task.Key();
  task.tries = 9;
  EXPECT_EQ(task.Key(), key);
  task.options.emplace_back("--acks");
  EXPECT_NE(task.Key(), key);
}

struct S_BadTask {
  const char* name;
  std::string text;
};
std::string Without(const std::string& member) {
  std::string text = Host::TaskText(Example());
  return text.replace(text.find('"' + member + '"'), member.size() + 2, "\"other\"");
}
const S_BadTask kBadTasks[] = {
    {"empty", ""},
    {"no_json", "input"},
    {"not_an_object", "[1]"},
    {"cut_off", Host::TaskText(Example()).substr(0, 80)},
    {"no_schema", Without("schema")},
    {"no_identity", Without("identity")},
    {"no_options", Without("options")},
    {"negative_begin",
     R"({"schema":1,"input":"a","identity":"b","begin":-1,"end":null,"names_input":false,"tries":1,"options":[]})"},
    {"options_of_numbers",
     R"({"schema":1,"input":"a","identity":"b","begin":0,"end":null,"names_input":false,"tries":1,"options":[1]})"},
    {"beyond_bytes",
     R"({"schema":1,"input":"\u0100","identity":"b","begin":0,"end":null,"names_input":false,"tries":1,"options":[]})"},
    {"nested_too_deep", std::string(5'000, '[')},
};
TEST_ROWS(BadTask, IsRefused, kBadTasks, row) {
  EXPECT_FALSE(Host::ReadTask(row.text));
  EXPECT_FALSE(Host::ReadResult(row.text));
}

TEST(Task, FilesSortByPathAndRangeAndNeverLeaveTheirDirectory) {
  std::vector<std::string> names;
  for (const char* input : {"/a/1.bin", "/a/2.bin", "/a/..", "https://h/x?y=../z"})
    for (const std::uint64_t begin : {0ULL, 9ULL, 10ULL, 10'000'000'000ULL}) {
      S_Task task = Example();
      task.input = input;
      task.range = {begin, begin + 1};
      names.push_back(Host::FileNameOf(task));
      EXPECT_EQ(names.back().find('/'), std::string::npos);
      EXPECT_NE(names.back().front(), '.');
    }
  EXPECT_TRUE(std::is_sorted(names.begin(), names.begin() + 8));
  S_Task task = Example();
  task.input = std::string(5'000, '\xFF');
  EXPECT_LT(Host::FileNameOf(task).size(), 180U);
}

struct S_QueueRow {
  const char* name;
  const char* address;
  const char* error;  // the beginning
};
const S_QueueRow kQueues[] = {
    {"plain", "nats://host/archive", ""},
    {"tls", "natss://user@host:4443/archive?ca=ca.pem", ""},
    {"no_queue", "nats://host", "has no path"},
    {"bad_name", "nats://host/a.b", "'a.b' cannot be the name"},
    {"other_scheme", "http://host/x", "must be written as nats://"},
    {"unknown_option", "nats://host/x?subject=y", "unknown option"},
};
TEST_ROWS(QueueAddress, IsChecked, kQueues, row) {
  const std::string error = Host::CheckQueue(row.address);
  EXPECT_TRUE(row.error[0] == '\0' ? error.empty() : error.starts_with(row.error)) << error;
}

}  // namespace
