// Names and values that mean something to a shell, a format, a path or a parser, through every door
// of the library.
#include "faults/faults_fixture.h"
#include "support/hostile_names.h"

namespace {

using namespace fairlead_test;

class NamesTest : public FaultsTest {
 protected:
  // In a process of its own, since a name must end none.
  static void with_each_name(void (*action)(const char* name)) {
    for (const std::string& name : kHostileNames) {
      empty_root();
      put_file("/etc/config/bystander.cfg", "{\"a\":\"1\"}");
      put_file("/prj/net/port.adp", "");
      put_file("/tmp/.var/dadp.cache", "{\"bystander\":\"/prj/net/port.adp\"}");
      const auto ended = run_child([&] { action(name.c_str()); });
      EXPECT_EQ(0, ended.status) << name << ", signal " << ended.signal << "\n" << ended.err;
      EXPECT_FALSE(exists("/tmp/ran")) << name;
      EXPECT_EQ("{\"a\":\"1\"}", file_content("/etc/config/bystander.cfg")) << name;
      char file[64] = "";
      EXPECT_EQ(ADP_DYN, AdpPath(nullptr, "bystander", file, sizeof file)) << name;
    }
  }

  static std::string text_at(const char* object, const char* path) {
    char text[8192] = "nothing";
    ConfigGetS(object, nullptr, path, text, sizeof text);
    return text;
  }
};

TEST_F(NamesTest, of_objects_are_names_and_nothing_else) {
  with_each_name([](const char* name) {
    const bool set = ConfigSetS(name, nullptr, "a", "value") == 1;
    EXPECT_EQ(set ? "value" : "nothing", text_at(name, "a")) << name;
    TalkFree(ConfigList(name));
    ConfigSet(name, nullptr, nullptr, nullptr);
    EXPECT_EQ("nothing", text_at(name, "a")) << name;
    ConfigInstall(name);
    ConfigUninstall(name);
  });
}

TEST_F(NamesTest, of_members_and_values_come_back_as_they_were) {
  for (const std::string& name : kHostileNames) {
    char* escaped = json_escape(name.c_str());
    vessel_t* document = VesselCreate();
    ASSERT_EQ(1, VesselSetS(document, escaped, escaped));
    ASSERT_EQ(1, ConfigSet("wan", nullptr, nullptr, document)) << name;
    TalkFree(document);
    document = ConfigGet("wan", nullptr, nullptr);
    const char* found = VesselGetS(document, escaped);
    char* text = json_unescape(found ? found : "nothing");
    EXPECT_EQ(name, text);
    free(text);
    free(escaped);
    TalkFree(document);
  }
}

TEST_F(NamesTest, that_would_spoil_a_file_are_refused) {
  put_file("/etc/config/wan.cfg", "{\"a\":\"1\"}");
  put_file("/prj/net/port.adp", "");
  ASSERT_EQ(1, DynAdpCreate("lan", "net/port"));
  for (const char* text : {"a\"b", "\\", "\"", "\\x", "\\u12", "x\",\"admin\":\"yes"}) {
    errno = 0;
    EXPECT_EQ(0, ConfigSetS("wan", nullptr, "b", text)) << text;
    EXPECT_EQ(EINVAL, errno) << text;
    EXPECT_EQ(0, ConfigSetS("wan", nullptr, text, "b")) << text;
    EXPECT_EQ(0, DynAdpCreate(text, "net/port")) << text;
  }
  EXPECT_EQ("{\"a\":\"1\"}", file_content("/etc/config/wan.cfg"));
  EXPECT_EQ("{\"lan\":\"/prj/net/port.adp\"}", file_content("/tmp/.var/dadp.cache"));
}

TEST_F(NamesTest, of_adapters_bind_nothing_that_is_not_there) {
  with_each_name([](const char* name) {
    EXPECT_EQ(0, DynAdpCreate("lamp", name)) << name;
    if (DynAdpCreate(name, "net/port") == 1) {
      EXPECT_EQ(ADP_DYN, AdpPath(nullptr, name, nullptr, 0)) << name;
      EXPECT_EQ(1, DynAdpDelete(name)) << name;
    }
    TalkFree(ProjectAdpList(name));
    char path[256];
    ProjectVarPath(path, sizeof path, name, "%s", name);
  });
}

TEST_F(NamesTest, in_requests_are_names_and_nothing_else) {
  with_each_name([](const char* name) {
    for (const char* form : {"%s", "%s:a", "%s:a=1", "%s.call[x]", "bystander.%s", "bystander:%s",
                             "lamp:a=%s", "bystander.call[%s]"}) {
      char identifier[8192];
      snprintf(identifier, sizeof identifier, form, name);
      uii_t* uii = UiiCreate(identifier);
      talk_t* answer = nullptr;
      if (uii) He(uii, &answer);
      if (answer && answer != TALK_DONE && answer != TALK_FAILED) TalkFree(answer);
      UiiFree(uii);
    }
    put_file("/etc/config/bystander.cfg", "{\"a\":\"1\"}");  // some of these are meant to change it
  });
}

TEST_F(NamesTest, of_value_stores_and_values_are_names_and_nothing_else) {
  with_each_name([](const char* name) {
    gvalue_t* store = GvalueCreate(name);
    gvalue_t* sane = GvalueCreate("levels");
    ASSERT_NE(nullptr, sane);
    for (gvalue_t* one : {store, sane}) {
      const int value = 5;
      if (!one || GvalueSet(one, name, &value, sizeof value) != 1) continue;
      int found = 0;
      memcpy(&found, GvalueGet(one, name), sizeof found);
      EXPECT_EQ(5, found) << name;
    }
  });
}

TEST_F(NamesTest, reach_a_script_as_they_are) {
  for (const std::string& name : kHostileNames) {
    put_file("/prj/net/lamp.ash",
             "#!/bin/sh\nprintf '%s|%s|%s' \"$config\" \"$value\" \"$paramter1\" >/tmp/seen\n"
             "printf '\\001' >&$pipeid\n",
             0755);
    if (name.size() > 255 || name[0] == '{') continue;  // longer paths are cut, and objects parsed
    EXPECT_EQ(1, AdpSet(nullptr, "net/lamp", nullptr, "a", nullptr, name.c_str())) << name;
    EXPECT_EQ("a|" + name + "|", file_content("/tmp/seen")) << name;
    EXPECT_FALSE(exists("/tmp/ran")) << name;
  }
}

TEST_F(NamesTest, in_the_environment_of_the_caller_do_not_reach_a_script_as_its_request) {
  put_file("/prj/net/lamp.ash",
           "#!/bin/sh\nprintf '%s|%s|%s|%s|%s' \"$adp\" \"$interface\" \"${config-none}\" "
           "\"${value-none}\" \"$pipeid\" >/tmp/seen\nprintf '\\001' >&$pipeid\n",
           0755);
  const auto ended = run_child([] {
    for (const char* variable :
         {"pipeid", "adp", "interface", "config", "value", "paramter_count", "paramter1"})
      setenv(variable, "$(touch /tmp/ran)", 1);
    setenv("IFS", "aeiou", 1);
    setenv("ENV", "/tmp/profile", 1);
    put_file("/tmp/profile", "touch /tmp/ran\n");
    EXPECT_EQ(1, AdpSet(nullptr, "net/lamp", nullptr, nullptr, nullptr, nullptr));
  });
  EXPECT_EQ(0, ended.status);
  const std::string seen = file_content("/tmp/seen");
  EXPECT_EQ("net/lamp|=|none|none|", seen.substr(0, seen.rfind('|') + 1));
  EXPECT_FALSE(exists("/tmp/ran"));
}

}  // namespace
