// The safe save: a file's content is the old or the new, whole, whatever happens on the way.
#pragma once

#include <string_view>

namespace fairlead {

// Replaces the content of the file, or makes the file (mode 0660 with the umask), under its write
// lock, and returns when the new content is on disk. An existing file keeps its mode, its owner and
// its place; symbolic links are followed. The new content is written beside it, to
// ".<name>.saving", and renamed; where that is not possible (a bind mount, a folder without write
// permission) it is written over in place, the one case that a power cut can tear, or a kill in the
// midst of more than a page; an old end is blanks for a moment. False with
// errno: EBUSY locked by another process for a second | EINVAL no regular file | that of the
// failing step.
bool replace_file(const char* path, std::string_view content);

// Removes what a killed save of the file has left beside it.
void remove_leftover(const char* path);

// Removes such a leftover by its own path, but not the file that a living save is about to rename:
// the rename would find that of another one in its place, half written.
void remove_unless_held(const char* temporary);

// A name that such a leftover has.
bool is_leftover(std::string_view name);

}  // namespace fairlead
