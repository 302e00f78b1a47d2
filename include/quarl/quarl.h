/// \file
/// quarl: reads and writes LAS files (Log ASCII Standard 2.0 and 3.0).
/// Everything a host needs comes through this header.
///
/// What holds for every operation of the library:
/// - An operation that can fail because of a file, an argument or the status
///   callback returns an ELASFILEERROR; a failed step hands its code up
///   unchanged, with no message and no logging. The writer also records
///   section, mnemonic, column and row (CLasWriter::GetLastError...).
/// - Only the reader's accessors that return a reference or a shared pointer
///   throw: tessel::Exception, when there is nothing to refer to. Nothing in
///   the library catches, so the standard library's exceptions (such as
///   std::bad_alloc) reach the host from any operation; the object then holds
///   what it held at that moment.
/// - Nothing is rolled back: a failed read keeps what it read, a failed
///   Validate keeps what it changed. The host's own objects are never changed
///   by the writer.
/// - Names of sections, suffixes and mnemonics are compared ignoring the case
///   of ASCII letters only, never by the host's locale; text keeps the bytes
///   of the file. Numbers in text are read like atof in the "C" locale: the
///   longest number at the start counts, text without one is 0.
/// - An object is used by one thread at a time; the status callback runs on
///   that thread, inside the operation.
#ifndef QUARL_QUARL_H
#define QUARL_QUARL_H

#include <quarl/document.h>
#include <quarl/reader.h>
#include <quarl/text_file.h>
#include <quarl/types.h>
#include <quarl/version.h>
#include <quarl/writer.h>
#include <tessel/tessel.h>

#endif
