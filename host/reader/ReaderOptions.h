// GMime, set up once for the reader: its parser options read mail as it is, not as the
// standards want it.
#pragma once

#include <gmime/gmime.h>

// The options every parse and decode of the reader uses; the first call sets GMime up.
GMimeParserOptions *readerOptions();
