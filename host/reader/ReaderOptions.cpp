// GMime's start and the reader's parser options.
#include "host/reader/ReaderOptions.h"

namespace {

GMimeParserOptions *makeOptions() {
  g_mime_init();
  GMimeParserOptions *options = g_mime_parser_options_new();
  // Undeclared 8-bit text in headers: UTF-8 where it is valid, else Windows-1252.
  const char *fallbacks[] = {"UTF-8", "windows-1252", nullptr};
  g_mime_parser_options_set_fallback_charsets(options, fallbacks);
  g_mime_parser_options_set_rfc2047_compliance_mode(options, GMIME_RFC_COMPLIANCE_LOOSE);
  g_mime_parser_options_set_parameter_compliance_mode(options, GMIME_RFC_COMPLIANCE_LOOSE);
  g_mime_parser_options_set_address_compliance_mode(options, GMIME_RFC_COMPLIANCE_LOOSE);
  return options;
}

} // namespace

GMimeParserOptions *readerOptions() {
  // Made once for the process, at the first use; never freed, as GMime's own state is not.
  static GMimeParserOptions *const options = makeOptions();
  return options;
}
