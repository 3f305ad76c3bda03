// Module files: how they are loaded, named and kept.
#include <sys/stat.h>

#include <dlfcn.h>
#include <unistd.h>

#include "adp/adp_support.h"
#include "support/child.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Ended;
using fairlead_test::Fault;
using fairlead_test::put_file;
using fairlead_test::run_child;
using fairlead_test::spelled;

class ModuleTest : public fairlead_test::AdapterTest {
 protected:
  // Installs a module where none has been yet: what was loaded stays loaded, from test to test.
  static std::string install_anew(const std::string& module, const std::string& name) {
    static int number = 0;
    const std::string place = "new" + std::to_string(++number) + "/" + name;
    install(module, place);
    return place;
  }
};

TEST_F(ModuleTest, all_symbols_are_bound_at_once) {
  install("unbound", "net/unbound");
  const std::string log = logged([] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, "net/unbound")); });
  EXPECT_EQ(0U, log.find("error: cannot load the file(/prj/net/unbound.adp)(err:")) << log;
}

TEST_F(ModuleTest, its_symbols_stay_its_own) {
  install("probe", "net/probe");
  adp_t* adp = AdpFileOpen(nullptr, "net/probe");
  ASSERT_NE(nullptr, adp);
  EXPECT_NE(nullptr, dlsym(adp->module->library, "probe_sets"));
  EXPECT_EQ(nullptr, dlsym(RTLD_DEFAULT, "probe_sets"));
  AdpFileClose(adp);
}

TEST_F(ModuleTest, entry_points_are_looked_up_at_first_use_and_kept) {
  const std::string object = install_anew("probe", "net/probe");
  adp_t* adp = AdpFileOpen(nullptr, object.c_str());
  ASSERT_NE(nullptr, adp);
  const adp_module_t* module = adp->module;
  EXPECT_EQ(nullptr, module->set);
  EXPECT_EQ(1, AdpAbSet(adp, nullptr, nullptr, nullptr, "1"));
  EXPECT_NE(nullptr, module->set);
  EXPECT_EQ(nullptr, module->get);
  TalkFree(AdpAbGet(adp, nullptr, nullptr));
  EXPECT_NE(nullptr, module->get);
  TalkFree(AdpIfList(adp));  // keeps nothing
  EXPECT_EQ(nullptr, module->interface_table);
  EXPECT_EQ("done", spelled(AdpIfCall(adp, "done", nullptr, nullptr)));
  EXPECT_NE(nullptr, module->interface_table);
  EXPECT_EQ(9, module->interface_count);
  AdpFileClose(adp);
}

TEST_F(ModuleTest, over_long_names_are_cut_and_terminated) {
  const std::string project(70, 'p'), adapter(80, 'a');
  install("tables", project + "/" + adapter);
  adp_t* adp = AdpFileOpen(nullptr, (project + "/" + adapter).c_str());
  ASSERT_NE(nullptr, adp);
  EXPECT_EQ(std::string(63, 'p'), adp->module->project);
  EXPECT_EQ(std::string(63, 'a'), adp->module->adapter);
  const std::string log = logged([&] { EXPECT_EQ(nullptr, AdpIfList(adp)); });
  EXPECT_EQ("error: cannot find the symblic(" + std::string(63, 'p') + "_" + std::string(63, 'a') +
                "__if_array) at /prj/" + project + "/" + adapter + ".adp\n",
            log);
  AdpFileClose(adp);
}

TEST_F(ModuleTest, the_name_ends_at_the_last_dot) {
  install("tables", "odd/a.b");
  adp_t* adp = AdpFileOpen(nullptr, "odd/a.b");
  ASSERT_NE(nullptr, adp);
  EXPECT_STREQ("a.b", adp->module->adapter);
  AdpFileClose(adp);
}

TEST_F(ModuleTest, a_module_that_failed_to_load_is_tried_anew) {
  const std::string object = install_anew("tables", "net/late");
  put_file("/prj/" + object + ".adp", "half a copy");
  logged([&] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, object.c_str())); });
  unlink(("/prj/" + object + ".adp").c_str());
  install("tables", object);
  adp_t* adp = AdpFileOpen(nullptr, object.c_str());
  ASSERT_NE(nullptr, adp);
  EXPECT_EQ(1, adp->module->references);
  AdpFileClose(adp);
}

TEST_F(ModuleTest, a_child_inherits_modules_and_its_own_do_not_reach_the_parent) {
  const std::string early = install_anew("probe", "net/probe");
  const std::string late = install_anew("tables", "odd/gap");
  adp_t* adp = AdpFileOpen(nullptr, early.c_str());
  ASSERT_NE(nullptr, adp);
  run_child([&] {
    unlink(("/prj/" + early + ".adp").c_str());
    put_file("/prj/" + early + ".adp", "not loaded again");
    adp_t* again = AdpFileOpen(nullptr, early.c_str());
    ASSERT_NE(nullptr, again);
    EXPECT_EQ(adp->module, again->module);
    AdpFileClose(again);
    EXPECT_EQ("first", spelled(AdpCall(nullptr, late.c_str(), "a", nullptr, nullptr)));
  });
  unlink(("/prj/" + late + ".adp").c_str());
  put_file("/prj/" + late + ".adp", "the parent would have to load it");
  logged([&] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, late.c_str())); });
  AdpFileClose(adp);
}

TEST_F(ModuleTest, lost_memory_while_opening_ends_the_process) {
  const std::string object = install_anew("tables", "odd/gap");
  int reports = 0;
  for (int nth = 1; nth <= 200; ++nth) {
    const Ended child = run_child([&] {
      Fault fault(Call::kMalloc, {.nth = nth, .error = ENOMEM});
      adp_t* adp = AdpFileOpen(nullptr, object.c_str());
      fault.disarm();
      const bool done = adp && !fault.fired();
      AdpFileClose(adp);
      return done ? 1 : 0;
    });
    EXPECT_EQ(0, child.signal) << nth;
    if (child.status == 255) {
      ++reports;
      EXPECT_EQ(0U, child.err.find("emerg: out of memory\nemerg: out of memory(err:12/"))
          << child.err;
    }
    if (child.status == 1) break;  // opened, and nothing was left to fail
  }
  EXPECT_EQ(2, reports);  // the handle and the module's record; the rest fails in other words
}

TEST_F(ModuleTest, a_fifo_is_not_waited_for) {
  fairlead_test::make_directories("/prj/net");
  ASSERT_EQ(0, mkfifo("/prj/net/pipe.adp", 0600));
  const std::string log = logged([] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, "net/pipe")); });
  EXPECT_EQ(0U, log.find("error: cannot load the file(/prj/net/pipe.adp)(err:")) << log;
}

}  // namespace
