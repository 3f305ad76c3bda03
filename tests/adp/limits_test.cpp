// Adapters at their limits: names that do not fit, formats that are refused, memory that runs out.
#include <fcntl.h>

#include <cerrno>
#include <cstdlib>

#include "adp/adp_support.h"
#include "support/child.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::Ended;
using fairlead_test::exists;
using fairlead_test::Fault;
using fairlead_test::file_content;
using fairlead_test::Gate;
using fairlead_test::put_file;
using fairlead_test::run_child;
using fairlead_test::spelled;

class LimitsTest : public fairlead_test::AdapterTest {
 protected:
  slash_t* path(const std::string& text) {
    SlashClear(&slash_);
    path_text_ = text;
    SlashAnalysis(&slash_, path_text_.data());
    return &slash_;
  }

  // A script that answers with the number of its parameters.
  void counting_script() {
    put_file("/prj/board/led.ash", "#!/bin/sh\nprintf '%s' $paramter_count >&$pipeid\n", 0755);
  }

  // Runs the action in a child whose n-th allocation fails, for each n in turn; the action disarms
  // the fault after the call. `check` sees the child and its status. Returns in how many rounds an
  // allocation failed.
  template <class Action, class Check>
  int each_lost_allocation(Action action, Check check) {
    constexpr int kUntouched = 100;  // added to the action's status
    for (int nth = 1;; ++nth) {
      const Ended child = run_child([&] {
        Fault fault(Call::kMalloc, {.nth = nth, .error = ENOMEM});
        const int status = action(fault);
        return fault.fired() ? status : status + kUntouched;
      });
      const bool fired = child.status < kUntouched || child.status == 255;
      check(child, fired ? child.status : child.status - kUntouched);
      if (!fired || HasFailure()) return nth - 1;
    }
  }

  void TearDown() override {
    SlashClear(&slash_);
    AdapterTest::TearDown();
  }

  slash_t slash_{};
  std::string path_text_;
};

TEST_F(LimitsTest, an_adapter_path_that_does_not_fit_names_no_other_file) {
  put_file("/prj/net/wan.adp", "");
  put_file("/prj/net/wan", "");  // what the path is when it is cut
  char buffer[sizeof "/prj/net/wan.adp"];
  EXPECT_EQ(buffer, ProjectAdpPath(path("net/wan"), buffer, sizeof buffer));
  EXPECT_EQ(nullptr, ProjectAdpPath(path("net/wan"), buffer, sizeof "/prj/net/wan"));
}

TEST_F(LimitsTest, a_project_file_that_does_not_fit_is_not_there) {
  put_file("/prj/net/hosts", "");
  put_file("/prj/net/host", "");
  char buffer[sizeof "/prj/net/hosts"];
  EXPECT_STREQ("/prj/net/hosts", ProjectOscPath(buffer, sizeof buffer, "net", "%s", "hosts"));
  EXPECT_EQ(nullptr, ProjectOscPath(buffer, sizeof "/prj/net/host", "net", "%s", "hosts"));
}

TEST_F(LimitsTest, a_runtime_folder_whose_name_does_not_fit_is_not_made) {
  char buffer[sizeof "/tmp/.var/serv"];
  EXPECT_EQ(nullptr, ProjectVarPath(buffer, sizeof buffer, "service", nullptr));
  EXPECT_FALSE(exists("/tmp/.var/serv"));
}

TEST_F(LimitsTest, a_project_whose_name_does_not_fit_lists_nothing) {
  // 255 characters of the path end inside the last but one folder's name.
  const std::string deep = "a/" + std::string(100, 'b') + "/" + std::string(100, 'c') + "/";
  const std::string parent = deep + std::string(250 - deep.size(), 'd');
  put_file("/prj/" + parent + "/wan.adp", "");
  ASSERT_EQ(255U, ("/prj/" + parent).size());
  EXPECT_EQ("{\"" + parent + "/wan\":\"/prj/" + parent + "/wan.adp\"}",
            spelled(ProjectAdpList(parent.c_str())));
  EXPECT_EQ(nullptr, ProjectAdpList((parent + "d").c_str()));
  EXPECT_EQ(nullptr, ProjectCfgList((parent + "/e").c_str()));
}

TEST_F(LimitsTest, lookup_without_a_buffer_still_tells_the_kind) {
  put_file("/prj/net/wan.adp", "");
  put_file("/prj/net/lan.ash", "");
  EXPECT_EQ(ADP_PRJ, AdpPath(nullptr, "net/wan", nullptr, 0));
  EXPECT_EQ(ADP_SHELL, AdpPath(nullptr, "net/lan", nullptr, 0));
  ASSERT_EQ(1, DynAdpCreate("lan/port", "net/wan"));
  EXPECT_EQ(ADP_DYN, AdpPath(nullptr, "lan/port", nullptr, 0));
  EXPECT_EQ(ADP_PURE, AdpPath(nullptr, "none", nullptr, 0));
}

TEST_F(LimitsTest, a_refused_format_makes_no_call) {
  counting_script();
  const wchar_t unspeakable[] = {static_cast<wchar_t>(0x110000), 0};
  const std::string log = logged([&] {
    errno = 0;
    EXPECT_EQ(nullptr, AdpCall(nullptr, "board/led", "x", nullptr, "%ls", unspeakable));
    EXPECT_EQ(EILSEQ, errno);
    errno = 0;
    EXPECT_EQ(nullptr, AdpSecureCall(nullptr, "board/led", "x", nullptr, "%ls", unspeakable));
    EXPECT_EQ(EILSEQ, errno);
    adp_t* adp = AdpFileOpen(nullptr, "pure/object");
    EXPECT_EQ(nullptr, AdpIfCall(adp, "x", nullptr, "%ls", unspeakable));
    AdpFileClose(adp);
  });
  EXPECT_EQ("", log);
}

TEST_F(LimitsTest, a_format_of_nothing_but_blanks_gives_a_list_without_parameters) {
  counting_script();
  const char* nothing = "";
  EXPECT_EQ("0", spelled(AdpCall(nullptr, "board/led", "x", nullptr, "%s", " ")));
  EXPECT_EQ("-1", spelled(AdpCall(nullptr, "board/led", "x", nullptr, nothing, "")));
  EXPECT_EQ("-1", spelled(AdpCall(nullptr, "board/led", "x", nullptr, nullptr)));
}

TEST_F(LimitsTest, parameters_of_any_length_are_whole) {
  counting_script();
  const std::string text(100000, 'x');
  put_file("/prj/board/led.ash", "#!/bin/sh\nprintf '%s' ${#paramter1} >&$pipeid\n", 0755);
  EXPECT_EQ("100000",
            spelled(AdpCall(nullptr, "board/led", "x", nullptr, "%s,%d", text.c_str(), 7)));
}

// A call either ends the process with the report, or it is made with all of its parameters.
TEST_F(LimitsTest, a_call_is_made_with_all_of_its_parameters_or_not_at_all) {
  put_file("/prj/board/led.ash",
           "#!/bin/sh\nprintf '%s' \"$paramter_count$paramter1$paramter2\" >&$pipeid\n", 0755);
  const int failures = each_lost_allocation(
      [](Fault& fault) {
        talk_t* result = AdpCall(nullptr, "board/led", "x", nullptr, "%s,%s,", "a", "b");
        fault.disarm();
        const std::string answer = spelled(result);
        return answer == "3ab" ? 1 : answer == "null" ? 2 : 3;
      },
      [](const Ended& child, int status) {
        EXPECT_TRUE(status == 1 || status == 2 || status == 255) << status << child.err;
        EXPECT_EQ(status == 255, child.err.find("out of memory") != std::string::npos);
      });
  EXPECT_GT(failures, 5);
}

TEST_F(LimitsTest, lost_memory_fails_a_call_when_its_report_is_filtered_out) {
  counting_script();
  const Ended child = run_child([] {
    GlogClose();
    const uint32_t silent = 0;
    EXPECT_EQ(1, GvalueSet(nullptr, "log_level", &silent, sizeof silent));
    EXPECT_EQ("0", spelled(AdpCall(nullptr, "board/led", "x", nullptr, "%s", " ")));
    adp_t* adp = AdpFileOpen(nullptr, "board/led");
    Fault fault(Call::kMalloc, {.error = ENOMEM});
    errno = 0;
    EXPECT_EQ(nullptr, AdpIfCall(adp, "x", nullptr, "a,b"));
    EXPECT_EQ(ENOMEM, errno);
    fault.disarm();
    Fault entry(Call::kMalloc, {.nth = 3, .error = ENOMEM});  // the text, then the entries
    EXPECT_EQ(nullptr, AdpIfCall(adp, "x", nullptr, "a,b"));
    EXPECT_TRUE(entry.fired());
    entry.disarm();
    AdpFileClose(adp);
  });
  EXPECT_EQ(0, child.status);
  EXPECT_EQ("", child.err);
}

TEST_F(LimitsTest, a_merge_is_written_whole_or_not_at_all) {
  const std::string before = "{\"a\":\"1\",\"b\":\"1\",\"c\":\"1\"}",
                    after = "{\"a\":\"2\",\"b\":\"2\",\"c\":\"1\"}";
  put_file("/etc/config/net.cfg", before);
  for (const auto road : {He, SecureHe}) {
    const int failures = each_lost_allocation(
        [&](Fault& fault) {
          uii_t* identifier = UiiCreate("net|{\"a\":\"2\",\"b\":\"2\"}");
          talk_t* out = nullptr;
          const int32_t status = identifier ? road(identifier, &out) : -1;
          fault.disarm();
          UiiFree(identifier);
          return status == 1 ? 1 : 2;
        },
        [&](const Ended&, int status) {
          EXPECT_EQ(status == 1 ? after : before, file_content("/etc/config/net.cfg")) << status;
          put_file("/etc/config/net.cfg", before);
        });
    EXPECT_GT(failures, 5);
  }
}

// What cannot be read for a moment is not absent, whether a module leaves it to the store or
// nothing but the store serves it.
TEST_F(LimitsTest, a_merge_into_what_cannot_be_read_loses_nothing) {
  install("tables", "net/table");
  const std::string before = R"({"dns":{"a":"1","b":"1"},"mtu":"1"})";
  const std::pair<std::string, const char*> merges[] = {
      {R"(|{"mtu":"2"})", R"({"dns":{"a":"1","b":"1"},"mtu":"2"})"},
      {R"(:dns|{"a":"2"})", R"({"dns":{"a":"2","b":"1"},"mtu":"1"})"}};
  const std::pair<Call, int> faults[] = {
      {Call::kOpen, EMFILE}, {Call::kRead, EIO}, {Call::kFcntl, ENOLCK}};
  const auto check = [&](const std::string& object, const auto& merge, auto road, auto fault) {
    const std::string file = "/etc/config/" + object + ".cfg";
    const auto& [request, after] = merge;
    for (EachCall each(fault.first, {.error = fault.second}); each.next();) {
      put_file(file, before);
      uii_t* identifier = UiiCreate((object + request).c_str());
      talk_t* out = nullptr;
      const int32_t status = each.run([&] { return road(identifier, &out); });
      const std::string left = file_content(file);
      // What a child has done may have failed to be told.
      EXPECT_TRUE(left == after || (status != 1 && left == before))
          << object << request << " " << fault.second << " " << each.nth() << " left " << left;
      UiiFree(identifier);
    }
  };
  logged([&] {
    for (const char* object : {"net/wan", "net/table"})
      for (const auto& merge : merges)
        for (const auto road : {He, SecureHe})
          for (const auto& fault : faults) check(object, merge, road, fault);
  });
}

TEST_F(LimitsTest, a_request_is_made_with_all_of_its_parameters_or_not_at_all) {
  put_file("/prj/board/led.ash",
           "#!/bin/sh\nprintf '%s' \"$paramter_count$paramter1$paramter2\" >&$pipeid\n", 0755);
  talk_t* request = StringTalk(
      "{\"adp\":\"board/led\",\"op\":\"x\",\"1\":\"a\",\"2\":{\"b\":\"c\"},\"3\":\"last\"}");
  const int failures = each_lost_allocation(
      [&](Fault& fault) {
        talk_t* out = nullptr;
        const int32_t status = TalkHe(request, &out);
        fault.disarm();
        if (status != 0) return 2;
        const std::string answer = spelled(out);
        return answer == "3a{\"b\":\"c\"}" ? 1 : answer == "null" ? 2 : 3;
      },
      [](const Ended& child, int status) {
        EXPECT_TRUE(status == 1 || status == 2 || status == 255) << status << child.err;
      });
  EXPECT_GT(failures, 5);
  TalkFree(request);
}

// "No value" means delete; a value that is lost on the way must not.
TEST_F(LimitsTest, a_set_that_runs_out_of_memory_deletes_nothing) {
  const std::string before = "{\"a\":\"1\"}", after = "{\"a\":{\"b\":\"2\"}}";
  const auto check = [&](const Ended&, int status) {
    EXPECT_EQ(status == 1 ? after : before, file_content("/etc/config/net.cfg")) << status;
    put_file("/etc/config/net.cfg", before);
  };
  put_file("/etc/config/net.cfg", before);
  const auto by_value_text = [](Fault& fault) {
    const int result = AdpSet(nullptr, "net", nullptr, "a", nullptr, "{\"b\":\"2\"}");
    fault.disarm();
    return result == 1 ? 1 : 2;
  };
  EXPECT_GT(each_lost_allocation(by_value_text, check), 5);
  const auto by_identifier = [](Fault& fault) {
    uii_t* identifier = UiiCreate("net:a={\"b\":\"2\"}");
    talk_t* out = nullptr;
    const int32_t status = identifier ? He(identifier, &out) : -1;
    fault.disarm();
    UiiFree(identifier);
    return status == 1 ? 1 : 2;
  };
  EXPECT_GT(each_lost_allocation(by_identifier, check), 5);
  const auto by_store = [](Fault& fault) {
    const int result = ConfigSetS("net", nullptr, "a", "{\"b\":\"2\"}");
    fault.disarm();
    return result == 1 ? 1 : 2;
  };
  EXPECT_GT(each_lost_allocation(by_store, check), 5);
}

TEST_F(LimitsTest, a_set_that_runs_out_of_memory_tells_a_script_all_or_nothing) {
  put_file("/prj/board/led.ash",
           "#!/bin/sh\nprintf '%s' \"$config=$value\" >/tmp/told\nprintf '\\001' >&$pipeid\n",
           0755);
  talk_t* value = StringTalk("{\"b\":\"2\"}");
  const int failures = each_lost_allocation(
      [&](Fault& fault) {
        const int result = AdpSet(path("board/led"), nullptr, nullptr, "a/b", value, nullptr);
        fault.disarm();
        return result == 1 ? 1 : 2;
      },
      [](const Ended&, int status) {
        EXPECT_EQ(status == 1 ? "a/b={\"b\":\"2\"}" : "<missing>", file_content("/tmp/told"));
        fairlead_test::remove_tree("/tmp/told");
      });
  EXPECT_GT(failures, 5);
  TalkFree(value);
}

// An object whose adapter cannot be looked for is not one without: the store would take the value.
TEST_F(LimitsTest, a_set_that_runs_out_of_memory_reaches_its_adapter_or_nobody) {
  install("probe", "net/probe");
  ASSERT_EQ(1, DynAdpCreate("here/too", "net/probe"));
  for (const std::string object : {"net/probe", "here/too"}) {
    const int failures = each_lost_allocation(
        [&](Fault& fault) {
          const int result = AdpSet(nullptr, object.c_str(), nullptr, "x", nullptr, "1");
          fault.disarm();
          return result == 1 ? 1 : 2;
        },
        [&](const Ended&, int) { EXPECT_FALSE(exists("/etc/config/" + object + ".cfg")); });
    EXPECT_GE(failures, 3);
  }
}

TEST_F(LimitsTest, a_binding_that_runs_out_of_memory_loses_no_other) {
  put_file("/prj/net/wan.adp", "");
  ASSERT_EQ(1, DynAdpCreate("a/b", "net/wan"));
  const std::string before = file_content("/tmp/.var/dadp.cache");
  const int failures = each_lost_allocation(
      [](Fault& fault) {
        const int result = DynAdpCreate("c", "net/wan");
        fault.disarm();
        return result == 1 ? 1 : 2;
      },
      [&](const Ended&, int status) {
        const std::string left = file_content("/tmp/.var/dadp.cache");
        if (status == 1)
          EXPECT_EQ("{\"a\":{\"b\":\"/prj/net/wan.adp\"},\"c\":\"/prj/net/wan.adp\"}", left);
        else
          EXPECT_EQ(before, left);
        put_file("/tmp/.var/dadp.cache", before);
      });
  EXPECT_GT(failures, 5);
}

TEST_F(LimitsTest, a_locked_registry_loses_no_binding) {
  put_file("/prj/net/wan.adp", "");
  ASSERT_EQ(1, DynAdpCreate("a/b", "net/wan"));
  Gate locked, release;
  fairlead_test::Child holder([&] {
    const int fd = lock_open("/tmp/.var/dadp.cache", O_RDWR, 0, 0);
    locked.open();
    return fd >= 0 && release.wait() ? 0 : 1;
  });
  ASSERT_TRUE(locked.wait());
  errno = 0;
  EXPECT_EQ(0, DynAdpCreate("c", "net/wan"));
  EXPECT_EQ(EBUSY, errno);
  release.open();
  EXPECT_EQ(0, holder.wait().status);
  EXPECT_EQ("{\"a\":{\"b\":\"/prj/net/wan.adp\"}}", file_content("/tmp/.var/dadp.cache"));
}

TEST_F(LimitsTest, a_parameter_without_a_text_form_makes_the_request_unusable) {
  counting_script();
  talk_t* request = StringTalk("{\"adp\":\"board/led\",\"op\":\"x\",\"1\":{\"a\":\"1\"}}");
  ASSERT_EQ(1, VesselClearX(VesselGetX(request, "1"), "a"));
  talk_t* out = request;
  EXPECT_EQ(-1, TalkHe(request, &out));
  EXPECT_EQ(request, out);
  TalkFree(request);
}

TEST_F(LimitsTest, a_listing_is_whole_or_null) {
  for (const char* file :
       {"/prj/net/wan.adp", "/prj/net/lan.ash", "/prj/net/a.cfg", "/prj/radio/wifi.adp"})
    put_file(file, "");
  vessel_t* (*const lists[])(void) = {[] { return ProjectAdpList("net"); },
                                      [] { return ProjectAdpList(nullptr); },
                                      [] { return ProjectCfgList(nullptr); }, ProjectList};
  for (const auto list : lists) {
    const std::string whole = spelled(list());
    int failures = 0;
    for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next(); failures += each.fired()) {
      errno = 0;
      vessel_t* listing = each.run(list);
      if (listing) {
        EXPECT_EQ(whole, spelled(listing)) << each.nth();
      } else {
        EXPECT_EQ(ENOMEM, errno) << each.nth();
      }
    }
    EXPECT_GT(failures, 4);
  }
}

TEST_F(LimitsTest, a_list_of_interfaces_is_whole_or_null) {
  install("probe", "net/probe");
  adp_t* adp = AdpFileOpen(nullptr, "net/probe");
  const std::string whole = spelled(AdpIfList(adp));
  int failures = 0;
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next(); failures += each.fired()) {
    vessel_t* listing = each.run([&] { return AdpIfList(adp); });
    if (listing) {
      EXPECT_EQ(whole, spelled(listing)) << each.nth();
    }
  }
  EXPECT_GT(failures, 10);
  AdpFileClose(adp);
}

}  // namespace
