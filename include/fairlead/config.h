/* config.h - the configuration store: one JSON file "/etc/config/<name>.cfg" for each object.
 *
 * A name may contain "/", which places the file in a folder; it is used as it is, and cut so that
 * the path has 255 characters at most. A missing, empty or damaged file reads as absent. The bytes
 * of a file, how it is saved and the marker "/etc/config/version" are described in
 * docs/configuration-file.md.
 *
 * Paths inside an object: a record, or, when that is NULL, a text that is parsed as by
 * SlashAnalysis; both NULL, or a record without segments, mean the whole object. A text without a
 * segment ("", "/") is refused: 0 or NULL, errno untouched. Each segment names the first member of
 * its name.
 *
 * Results that are documents belong to the caller, who releases them with TalkFree; arguments stay
 * the caller's. errno: EINVAL a name or project is NULL | EBUSY a file is locked elsewhere for more
 * than a second | ENOMEM | otherwise that of the function that failed.
 *
 * Threads: ConfigGetS without a buffer shares one among all callers, and locks belong to the
 * process: one thread at a time. Fork: safe. Processes: each read and each save is locked, a whole
 * change is not: of two at the same time one can be lost. */
#ifndef FAIRLEAD_CONFIG_H
#define FAIRLEAD_CONFIG_H

#include "fairlead/api.h"
#include "fairlead/talk/path.h"

FAIRLEAD_API_BEGIN

/* Stores a copy of the value at the path, or as the whole object, which must be a Vessel; a NULL
 * value deletes. On the way to the path members are made, and what is no object is replaced by one.
 * Below a path the copy is that of TalkDup, which leaves out members that are numbers, arrays or
 * literals; a whole object is stored with them. Folders are made with mode 0770, and the last file
 * deleted takes its folder with it.
 *
 * Returns 1 when the file is on the disk, and leaves the marker then; 0 when nothing was changed:
 * the member to delete is missing, the value is neither object nor string, the file holds JSON that
 * is no object (deliberate: somebody meant it; a damaged file is replaced), or a step failed. Texts
 * are stored as they are (json.h): a name or a text that is not in escaped form, such as one with a
 * bare double quote, would make the file another document or none, and gives 0 with EINVAL; so does
 * a number that is none, or a member with two values. */
int ConfigSet(const char* name, slash_t* path, const char* path_text, talk_t* value);

/* The same with a value made from text as by StringTalk. Deliberate: a NULL or blank text, and text
 * that begins with "{" and does not parse, deletes, so that what cannot be stored does not leave
 * the old value in force. Lost memory deletes nothing: 0 with errno ENOMEM. */
int ConfigSetS(const char* name, slash_t* path, const char* path_text, const char* value);

/* The value at the path, or the whole object, as a new document; NULL when there is none. EINVAL
 * also when the member is missing. */
talk_t* ConfigGet(const char* name, slash_t* path, const char* path_text);

/* The same as text: an object's JSON text or a string, cut to fit, in buffer[0..size), or in a
 * static buffer of 4096 bytes, good until the next such call, when buffer is NULL or size below 1.
 * The buffer's last byte is set to NUL, however short the text. NULL when there is nothing, or a
 * value without a text (a number, an array, a literal). */
char* ConfigGetS(const char* name, slash_t* path, const char* path_text, char* buffer, int size);

/* What exists in a folder below "/etc/config", NULL meaning all: a new Vessel with one string, the
 * full path, under the stem of each file, and one such Vessel under the name of each folder, in the
 * order the file system yields. The stem ends at the first ".cfg" anywhere in the name, so that
 * lan.cfg.bak lists as lan too (kept for tools that look for leftovers). Hidden names, names
 * without ".cfg", paths of more than 255 characters and links to a folder that the link lies in are
 * left out. NULL with errno of opendir when the folder cannot be read; NULL with ENOMEM. */
vessel_t* ConfigList(const char* name);

/* The same for any folder, by its path. EINVAL: directory NULL. */
vessel_t* config_list_all(const char* directory);

/* Copies a project's default files, "/prj/<project>/<stem>.cfg", into the store as
 * <project>/<stem>, over what is there. Each is logged as a notice on syslog and console, "install
 * a config %s to %s by %s" (source, destination, project), and counts whether or not its copy
 * succeeds; what is no regular file is not copied. Returns 1 when there was at least one, else 0;
 * EINVAL also when the project has a segment "..". */
int ConfigInstall(const char* project);

/* Removes the files of "/etc/config/<project>", each logged as a notice, "uninstall a config %s by
 * %s" (file, project), and then the folder. Hidden files and folders inside survive. Returns 1 when
 * the folder is gone, else 0; EINVAL also when the project is no name below "/etc/config": "", or
 * with a segment "." or "..", ENAMETOOLONG when its path has more than 255 characters. */
int ConfigUninstall(const char* project);

FAIRLEAD_API_END

#endif
