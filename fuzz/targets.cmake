# The fuzz targets over the agent's own parsers, one call each:
#   tuk_fuzz_target(<name> <source> <library> [definitions...])
# fuzz/CMakeLists.txt makes each a libFuzzer program; tests/CMakeLists.txt compiles each entry
# once more, as fuzz_<name>, into the replay of past inputs. Each defines the function.
tuk_fuzz_target(message_init message_init_fuzz.cpp tuk_fuzz_agent)
tuk_fuzz_target(mail_date mail_date_fuzz.cpp tuk_fuzz_agent)
tuk_fuzz_target(framing_eudora framing_fuzz.cpp tuk_fuzz_agent FUZZ_MAIL_FILE=CEudoraMailFile)
tuk_fuzz_target(framing_internet framing_fuzz.cpp tuk_fuzz_agent
                FUZZ_MAIL_FILE=CInternetMailMailFile)
tuk_fuzz_target(framing_netscape framing_fuzz.cpp tuk_fuzz_agent FUZZ_MAIL_FILE=CNetscapeMailFile)
tuk_fuzz_target(framing_pegasus framing_fuzz.cpp tuk_fuzz_agent FUZZ_MAIL_FILE=CPegasusMailFile)
tuk_fuzz_target(pairing pairing_fuzz.cpp tuk_fuzz_agent)
tuk_fuzz_target(registry registry_fuzz.cpp tuk_cmn)
tuk_fuzz_target(ini ini_fuzz.cpp tuk_platform)
