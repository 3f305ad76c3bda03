// An identifier for the length of a test, and its pieces in one line for comparing.
#pragma once

#include <string>

#include "fairlead/uii.h"
#include "uii/owned_uii.h"

namespace fairlead_test {

inline fairlead::OwnedUii uii(const char* text) { return fairlead::OwnedUii(UiiCreate(text)); }

inline std::string text_or_dash(const char* text) { return text ? text : "-"; }

// "kind object|interface|parameters|config|value", with "-" for what is not there.
inline std::string pieces(uii_t* uii) {
  if (!uii) return "null";
  return std::to_string(uii->kind) + " " + text_or_dash(UiiObjectString(uii)) + "|" +
         text_or_dash(UiiInterface(uii)) + "|" + text_or_dash(UiiParamString(uii)) + "|" +
         text_or_dash(UiiConfigString(uii)) + "|" + text_or_dash(UiiValueString(uii));
}

inline std::string pieces(const char* text) { return pieces(uii(text).get()); }

}  // namespace fairlead_test
