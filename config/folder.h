// Folders of the configuration store.
#pragma once

namespace fairlead {

// Makes the folder and those above it, unless it is there and readable, and returns when they are
// on disk. Mode 0770 where its parent is there, else what a plain "mkdir -p" gives.
bool ensure_config_folder(const char* folder);

}  // namespace fairlead
