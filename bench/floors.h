// The bare system calls of a request's work, without a line of the library: what no implementation
// can do without.
#pragma once

#include <string>

namespace bench {

// Ends the program with the name of the function that failed.
void require(bool holds, const char* what);

// An empty function, called as one calls LogWrite.
void do_nothing(unsigned word, const char* file, int line, const char* format, ...);

// Opens the file, locks it for reading, asks its size, reads and closes it.
void read_file(const char* path);

// Writes a file beside `path`, puts it on the disk, renames it to `path` and puts the folder on the
// disk. Holds the old file open meanwhile, as one who locks it does: that it is given back is not
// waited for then.
void replace_file(const char* folder, const char* path, const std::string& content);

// Waits for what earlier changes of the folder left to do, which the next one would pay for.
void settle_disk(const char* folder);

// Looks for an adapter's module and script, as `access` does for two names that may be missing.
void look_for(const char* module, const char* script);

// Forks a child that answers 200 bytes over a socket pair, and reads them to the end.
void fork_and_answer();

// Forks a child that runs the script with the shell, and reads what it writes to the descriptor in
// the variable pipeid to the end.
void fork_and_run(const char* script);

// A connection to syslog, and a datagram of this text over it.
void open_syslog();
void send_to_syslog(const char* text);

// flock for writing around a copy of these bytes into a shared mapping, made at the first call.
void open_shared(const char* path, int size);
void copy_under_lock(const void* bytes, int size);

}  // namespace bench
