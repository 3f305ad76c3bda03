// What is told of services: status documents and their list.
#include "service/service_support.h"
#include "support/child.h"
#include "support/faults.h"

namespace {

using namespace fairlead_test;

class StatusTest : public ServiceTest {
 protected:
  static std::string info_of(const std::string& parameters) {
    put_record("wan", record_of("net/wan", "run", parameters));
    const std::string all = info("wan");
    const std::string head = R"({"status":"die","adp":"net/wan","func":"run")";
    EXPECT_EQ(0u, all.find(head)) << all;
    return all.substr(head.size());
  }
};

TEST_F(StatusTest, a_living_service_tells_its_process) {
  const pid_t daemon = start("wan");
  EXPECT_EQ(
      R"({"status":"live","pid":")" + std::to_string(daemon) + R"(","adp":"test","func":"wait"})",
      spelled(ServiceInfo("%s", "wan")));
  stop("wan");
}

TEST_F(StatusTest, a_dead_service_has_no_process) {
  put_record("wan", record_of("net/wan", "run"));
  EXPECT_EQ(R"({"status":"die","adp":"net/wan","func":"run"})", info("wan"));
}

TEST_F(StatusTest, a_record_without_an_interface_tells_none) {
  put_record("wan", record_of("net/wan", ""));
  EXPECT_EQ(R"({"status":"die","adp":"net/wan"})", info("wan"));
}

TEST_F(StatusTest, parameters_are_numbered_from_one) {
  EXPECT_EQ(R"(,"parameter1":"ppp0"})", info_of("ppp0"));
  EXPECT_EQ(R"(,"parameter1":"a","parameter2":"b","parameter3":"c"})", info_of("a,b, c"));
}

TEST_F(StatusTest, a_parameter_that_is_an_object_is_shown_as_one) {
  EXPECT_EQ(R"(,"parameter1":{"a":"1","b":{"c":"2"}},"parameter2":"x"})",
            info_of(R"({"a":"1","b":{"c":"2"}},x)"));
  EXPECT_EQ(R"(,"parameter1":{"n":21,"l":[1,true]}})", info_of(R"({"n": 21, "l": [1, true]})"));
}

TEST_F(StatusTest, what_follows_an_object_behind_a_comma_is_the_next_parameter) {
  EXPECT_EQ(R"(,"parameter1":{"x":21},"parameter3":"1][","parameter4":"2},,1][,2"})",
            info_of(R"({"x": 21},,1][,2},,1][,2)"));
}

TEST_F(StatusTest, a_parameter_without_a_value_is_left_out) {
  EXPECT_EQ(R"(,"parameter2":"b","parameter4":"d"})", info_of(",b,,d"));
  EXPECT_EQ(R"(,"parameter2":"b"})", info_of("{broken},b"));
  EXPECT_EQ("}", info_of(""));
  EXPECT_EQ("}", info_of("  "));
}

TEST_F(StatusTest, info_of_an_unknown_service_is_null) {
  errno = 0;
  EXPECT_EQ(nullptr, ServiceInfo("wan"));
  EXPECT_EQ(ENOENT, errno);
  put_record("wan", "short");
  errno = 0;
  EXPECT_EQ(nullptr, ServiceInfo("wan"));
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(StatusTest, the_list_holds_every_service_in_alphabetical_order) {
  EXPECT_EQ("{}", spelled(ServiceList()));
  for (const char* name : {"wan", "lan", "Lan", "lan2"}) put_record(name, record_of(name, "run"));
  put_record("off", "");
  put_file("/tmp/.var/service/.hidden.spid", record_of("o", "i"));
  put_file("/tmp/.var/service/wan.spid.old", record_of("o", "i"));
  put_file("/tmp/.var/service/two.spid.spid", record_of("o", "i"));
  EXPECT_EQ(R"({"Lan":{"status":"die","adp":"Lan","func":"run"},)"
            R"("lan":{"status":"die","adp":"lan","func":"run"},)"
            R"("lan2":{"status":"die","adp":"lan2","func":"run"},)"
            R"("wan":{"status":"die","adp":"wan","func":"run"}})",
            spelled(ServiceList()));
}

TEST_F(StatusTest, the_list_is_empty_when_the_folder_cannot_be_read) {
  remove_tree("/tmp/.var");
  EXPECT_EQ("{}", spelled(ServiceList()));
}

// Lost memory ends the process with its message; it never shortens an answer.
TEST_F(StatusTest, lost_memory_is_logged_and_ends_the_process) {
  put_record("wan", record_of("net/wan", "run", R"({"a":"1"},two)"));
  const std::string whole = spelled(ServiceList());
  int failures = 0;
  for (int nth = 1;; ++nth) {
    const Ended ended = run_child([&] {
      GlogOpen("test", LOG_MODE_CONSOLE, 7);
      Fault fault(Call::kMalloc, {.nth = nth, .error = ENOMEM});
      vessel_t* list = ServiceList();
      fault.disarm();
      EXPECT_EQ(whole, spelled(list)) << nth;
      return fault.fired() ? 1 : 0;
    });
    if (ended.status == 0) break;
    failures += ended.status == 255;
    const bool told = ended.err.find("emerg: out of memory(err:12/") != std::string::npos;
    // 1: a failed look at the own descriptors is made up for.
    EXPECT_TRUE(ended.status == 255 ? told : ended.status == 1) << nth << ": " << ended.err;
  }
  EXPECT_GT(failures, 8);
}

}  // namespace
