/* text.h - talk documents as text, files, messages and listings.
 *
 * The text form is compact JSON, without white space between its tokens. Texts that these functions
 * return belong to the caller, who releases them with free(); documents with TalkFree (node.h).
 * errno EINVAL means a null argument, a node of the wrong kind or a text that does not parse, and
 * ENOMEM lost memory. Nothing is logged.
 *
 * Threads: safe on different documents and files. Fork: plain memory and files. Files are read
 * under a shared record lock on the whole file and written under an exclusive one, so that no
 * process reads what another one has half written. Such locks do not keep the threads of one
 * process apart: a file that is saved belongs to one thread at a time. */
#ifndef FAIRLEAD_TALK_TEXT_H
#define FAIRLEAD_TALK_TEXT_H

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

/* Reads one object; white space (space, tab, line feed, carriage return) before and after it is
 * skipped. Returns a new Vessel, or NULL with errno: EINVAL text NULL, blank, or anything but one
 * object that parses to its end | ENOMEM. */
vessel_t* StringVessel(const char* text);

/* An object when the first character after white space is "{", as by StringVessel; otherwise a
 * string that holds the text from that character on, byte for byte: quotes, brackets and trailing
 * white space stay, nothing is decoded. Returns a new document, or NULL with errno: EINVAL text
 * NULL, blank, or an object that does not parse | ENOMEM. */
talk_t* StringTalk(const char* text);

/* The compact text of an object, without a line end. Returns a new text, or NULL with errno: EINVAL
 * no Vessel, or a member somewhere in it has no value | ENOMEM. */
char* VesselString(vessel_t* vessel);

/* The same for a Vessel, and for any other string node a copy of its text: a string's characters,
 * a member's name. Returns a new text, or NULL with errno: EINVAL talk NULL or of another kind, or
 * as for VesselString | ENOMEM. */
char* TalkString(talk_t* talk);

/* Reads an object from a file, which may be locked elsewhere for one second at most. errno is kept
 * on success. Returns a new Vessel, or NULL with errno: EINVAL path NULL, the file is empty or not
 * one object | EBUSY locked elsewhere | ENOMEM | what open, fstat or read gave. */
vessel_t* FileVessel(const char* path);

/* Writes the text of an object to a file, without a line end, and returns 1 when all of it is on
 * the disk; errno is kept then. The file has the old text or the new one, whole, whatever happens
 * on the way; docs/configuration-file.md tells how. A new file has mode 0660 with the umask, an
 * existing one keeps mode, owner and place (a symbolic link is followed). It may be locked
 * elsewhere for one second at most. Returns 0 with errno: EINVAL no Vessel, a member without a
 * value, path NULL or empty, or of something that is no file, such as a device | EBUSY locked
 * elsewhere | ENOMEM | what the failing system call gave.
 */
int VesselFile(vessel_t* vessel, const char* path);

/* Reads one message from a descriptor: up to a read that ends with a 0 byte, or the end of the
 * stream. Line feeds, carriage returns and blanks around it are dropped; a 0 byte inside a read
 * ends the text, but not the message. Waits as long as the sender does; a signal that interrupts
 * the read ends the wait with EINTR (deliberate: a caller's time limit rests on it).
 *
 * Returns a new document as by StringTalk; TALK_DONE or TALK_FAILED, which are no documents and
 * must not be freed, when the first byte is 0x01 or 0x02; NULL with errno: EINVAL an empty message
 * or an object that does not parse | ENOMEM | what read gave. */
talk_t* FdTalk(int fd);

/* Prints a document on standard output as an indented listing for people, four spaces per level:
 *
 *   {
 *       "a":"1",
 *       "b":
 *       {
 *           "c":"2"
 *       }
 *   }
 *
 * Nothing is escaped, a line is cut at 4095 characters, and members that are neither strings nor
 * objects are left out. Returns what the last print call returned (a number of characters, negative
 * when it failed), 0 when nothing was printed. */
int TalkPrint(talk_t* talk);

FAIRLEAD_API_END

#endif
