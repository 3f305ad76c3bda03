// Loaded modules: each file once per process, and what it exports.
#pragma once

#include "fairlead/adp/handle.h"

namespace fairlead {

// The record of the module file, loaded now or earlier, with one reference more; null, logged, when
// it cannot be had.
adp_module_t* acquire_module(const char* file);

// The entry points of a module; null when it has none. Looked up once and kept.
adp_set_t set_function(adp_module_t* module);
adp_get_t get_function(adp_module_t* module);

// A symbol of the module: its name ("<project>_<adapter>__<what>") and its address, null when it is
// missing.
class ModuleSymbol {
 public:
  ModuleSymbol(const adp_module_t* module, const char* what);

  const char* name() const { return name_; }
  explicit operator bool() const { return address_ != nullptr; }

  // The value of the variable that the symbol is.
  template <class T>
  T value() const {
    return *static_cast<const T*>(address_);
  }

 private:
  char name_[256];
  const void* address_;
};

}  // namespace fairlead
