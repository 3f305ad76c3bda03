/* status.c - the adapter of system/status: what the machine is doing right now.
 *
 *   he system/status                  all figures
 *   he system/status:load/one         one of them
 *   he system/status.uptime           an interface without parameters
 *   he system/status.traffic[lo]      an interface with a parameter
 *
 * An adapter is a shared object that exports up to four variables; those at the end of this file.
 * Their names begin with the project and the adapter, the folder and the name of the file:
 * system_status for /prj/system/status.adp. */
#include <stdio.h>
#include <string.h>

#include "fairlead/adp.h"
#include "fairlead/log.h"
#include "fairlead/talk.h"

enum { LINE_SIZE = 512 };

/* The first line of a file of the kernel, or NULL. */
static char* first_line(const char* path, char* line, int size) {
  FILE* file = fopen(path, "re");
  if (!file) {
    LogWrite(LOG_ERRNO | 3, "status", __LINE__, "cannot open %s", path);
    return NULL;
  }
  char* read = fgets(line, size, file);
  fclose(file);
  return read;
}

/* Adds whole seconds since the machine started. 1, or 0. */
static int add_uptime(vessel_t* report) {
  char line[LINE_SIZE], seconds[32];
  if (!first_line("/proc/uptime", line, sizeof line)) return 0;
  if (sscanf(line, "%31[0-9]", seconds) != 1) return 0;
  return VesselSetS(report, "uptime", seconds);
}

/* Adds the mean number of running processes over three spans. 1, or 0. */
static int add_load(vessel_t* report) {
  char line[LINE_SIZE], one[16], five[16], fifteen[16];
  if (!first_line("/proc/loadavg", line, sizeof line)) return 0;
  if (sscanf(line, "%15s %15s %15s", one, five, fifteen) != 3) return 0;

  vessel_t* load = VesselCreate();
  if (!load) return 0;
  if (VesselSetS(load, "one", one) && VesselSetS(load, "five", five) &&
      VesselSetS(load, "fifteen", fifteen) && VesselSetX(report, "load", load))
    return 1; /* the report owns it now */
  TalkFree(load);
  return 0;
}

static vessel_t* make_report(void) {
  vessel_t* report = VesselCreate();
  if (report && add_uptime(report) && add_load(report)) return report;
  TalkFree(report);
  return NULL;
}

/* Takes the value at the path out of a document and frees the rest. */
static talk_t* part_of(vessel_t* document, slash_t* path) {
  int depth = path ? SlashCount(path) : 0;
  if (depth < 1) return document;
  vessel_t* holder = document;
  for (int i = 1; holder && i < depth; ++i) holder = VesselGetX(holder, SlashGet(path, i));
  talk_t* part = holder ? VesselCutX(holder, SlashGet(path, depth)) : NULL;
  TalkFree(document);
  return part;
}

static talk_t* get(const char* object, slash_t* path) {
  (void)object;
  vessel_t* report = make_report();
  return report ? part_of(report, path) : NULL;
}

/* Without a set function the configuration store would take what is written. */
static int32_t refuse_set(const char* object, slash_t* path, talk_t* value) {
  (void)path;
  (void)value;
  LogWrite(4, "status", __LINE__, "%s cannot be set", object);
  return 0;
}

static talk_t* uptime(const char* object, param_t* parameters) {
  (void)object;
  (void)parameters;
  vessel_t* report = make_report();
  if (!report) return TALK_FAILED;
  talk_t* seconds = VesselCutX(report, "uptime");
  TalkFree(report);
  return seconds;
}

/* A line of /proc/net/dev: the name, a colon, eight figures of what came in, eight of what went. */
static vessel_t* counters_of(const char* line, const char* name) {
  char found[64], in_bytes[24], in_packets[24], out_bytes[24], out_packets[24];
  if (sscanf(line, " %63[^:]: %23s %23s %*s %*s %*s %*s %*s %*s %23s %23s", found, in_bytes,
             in_packets, out_bytes, out_packets) != 5 ||
      strcmp(found, name) != 0)
    return NULL;

  vessel_t* counters = VesselCreate();
  if (counters && VesselSetS(counters, "interface", name) &&
      VesselSetS(counters, "in_bytes", in_bytes) &&
      VesselSetS(counters, "in_packets", in_packets) &&
      VesselSetS(counters, "out_bytes", out_bytes) &&
      VesselSetS(counters, "out_packets", out_packets))
    return counters;
  TalkFree(counters);
  return NULL;
}

/* Parameter 1: the name of a network interface of the machine. */
static talk_t* traffic(const char* object, param_t* parameters) {
  const char* name = parameters ? ParamGetS(parameters, 1) : NULL;
  if (!name) {
    LogWrite(4, "status", __LINE__, "%s.traffic needs the name of an interface", object);
    return TALK_FAILED;
  }
  FILE* file = fopen("/proc/net/dev", "re");
  if (!file) {
    LogWrite(LOG_ERRNO | 3, "status", __LINE__, "cannot open /proc/net/dev");
    return TALK_FAILED;
  }
  vessel_t* counters = NULL;
  char line[LINE_SIZE];
  while (!counters && fgets(line, sizeof line, file)) counters = counters_of(line, name);
  fclose(file);
  if (counters) return counters;
  LogWrite(4, "status", __LINE__, "there is no network interface %s", name);
  return TALK_FAILED;
}

static adp_interface_t interfaces[] = {
    {"uptime", uptime, "", "seconds since the machine started"},
    {"traffic", traffic, "INTERFACE", "bytes and packets of a network interface, in and out"},
};

/* What the library looks for. */
adp_set_t system_status__set = refuse_set;
adp_get_t system_status__get = get;
adp_interface_t* system_status__if_array = interfaces;
int32_t system_status__if_size = sizeof interfaces / sizeof interfaces[0];
