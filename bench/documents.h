// The documents that are measured, made anew in each run and the same in every run.
#pragma once

#include <string>
#include <vector>

namespace bench {

struct Document {
  std::string name;
  std::string text;
};

// Like a device's configuration: nested objects, short strings, about `size` bytes.
std::string configuration(size_t size);

std::string deep(size_t levels);
std::string wide(size_t members);
std::string long_strings(size_t count, size_t length);

// All of them, by name.
const std::vector<Document>& documents();
const std::string& document(const std::string& name);

}  // namespace bench
