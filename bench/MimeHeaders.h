// Header fields of the generated MIME mail that carry text beyond ASCII: display names and
// subjects as encoded words, folded over lines; attachment names in each of the forms mail
// programs write them; and boundaries in their several styles.
#pragma once

#include "bench/MailCorpus.h"

#include <cstdint>
#include <string>

// A From or To address whose display name is encoded words: "=?UTF-8?B?...?= <a@b>".
void appendEncodedAddress(std::string &out, BenchRandom &random, const std::string &eol);

// What a subject starts with: nothing, or a reply or forward mark in one of its languages.
const char *subjectMark(BenchRandom &random);

// A subject with letters beyond ASCII, without the field name or line end: either wholly
// encoded words folded over lines, or plain words with the runs that need it encoded.
void appendEncodedSubject(std::string &out, BenchRandom &random, const std::string &eol);

// An attachment's Content-Type (of `type`, e.g. "application/pdf"), transfer encoding and
// Content-Disposition, its name given plainly, as encoded words, or as an extended
// parameter, continued over lines when long. Ends with the blank line before the content.
void appendAttachmentHeaders(std::string &out, BenchRandom &random, const std::string &eol,
                             const char *type, const char *extension);

// A boundary unlike any other in the message: `depth` tells a nested one from its parent.
std::string makeBoundary(BenchRandom &random, unsigned depth);
