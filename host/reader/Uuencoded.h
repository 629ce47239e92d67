// Files uuencoded into the text of a message, as mail carried them before MIME: a line
// "begin 644 name", lines of uuencode, and "end".
#pragma once

#include "host/reader/MailReader.h"

#include <string>
#include <vector>

// Takes each whole uuencoded block out of `text` from the line at `from` on, and adds it to
// `attachments` by its name and decoded size. A block without its "end" line, or with a line
// that is no uuencode, stays.
void takeUuencodedFiles(std::string &text, size_t from, std::vector<MailAttachment> &attachments);
