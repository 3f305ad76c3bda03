// The device that the requests are measured on: a configuration, an adapter of each kind, joints,
// registrations, a value store and a syslog.
#pragma once

#include <string>

namespace bench {

inline constexpr char kConfigFolder[] = "/etc/config/bench";
inline constexpr char kConfigFile[] = "/etc/config/bench/wan.cfg";
inline constexpr char kRegistry[] = "/tmp/.var/dadp.cache";
inline constexpr char kJoints[] = "/tmp/.var/joint.cache";
inline constexpr char kModule[] = "/prj/bench/many.adp";
inline constexpr char kScript[] = "/prj/bench/lamp.ash";
inline constexpr int kJointCount = 100;
inline constexpr int kValueCount = 100;

// Everything but the registrations. Ends the program outside of a private device root.
void arrange_device(const char* module_file);

// The registry holds this many objects, bench/object0 the first of them.
void arrange_registrations(int count);

// Takes what syslog was sent, so that its queue does not fill.
void drain_syslog();

std::string value_name(int number);

}  // namespace bench
