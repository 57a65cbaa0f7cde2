#pragma once

#include <string>
#include <string_view>

// The summary-information property set: the OLE property-set stream whose Comments
// property the file manager shows as a file's comment. This unit builds and parses
// the stream's bytes in memory and does no input or output.
//
// Only a narrow subset of the format is understood: byte order FE FF, version 0, one
// section at offset 48, and the value types VT_I2, VT_I4, VT_UI4, VT_LPSTR and
// VT_FILETIME. Text is UTF-8 inside the program; VT_LPSTR values are in the set's own
// CodePage (no CodePage means Windows-1252, 65001 is UTF-8, 1200 is UTF-16LE), and a
// page that the C library does not know is taken as Windows-1252.
//
// None of the three functions fails: they accept any bytes of any length, and their
// output grows only linearly with their input.

// The Comments text of a stream, or "" when the stream is not recognised, has no
// Comments property, or holds it in another type than VT_LPSTR. The text ends at the
// first zero (a 16-bit zero in a UTF-16 set).
std::string readSummaryInfoDesc(std::string_view stream);

// The stream rebuilt with `description` as its Comments property (appended last), or
// without Comments when `description` is empty. The 48-byte header and the other
// properties are kept; values of types outside the subset become empty VT_LPSTR
// strings. The rebuilt set always declares the code page its strings are in: one
// that declared none, 0, or a page the C library cannot convert gets CodePage 1252
// (first in the table when it had none), the page its strings were read in. A
// description that the set's code page cannot hold switches the set to 65001 (UTF-8)
// and re-encodes its other strings. An unrecognised stream comes back unchanged.
std::string updateSummaryInfo(std::string_view stream, std::string_view description);

// A complete fresh stream: CodePage, Locale 0x409 and, unless `description` is empty,
// Comments. It declares code page 1252 when the text fits Windows-1252, else 65001.
std::string createSummaryInfo(std::string_view description);
