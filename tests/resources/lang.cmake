# Included from tests/CMakeLists.txt: what resources_tests needs besides its sources.
if(NOT TARGET resources_tests)
  return()
endif()

# The agent's own table, as the agent links it.
target_link_libraries(resources_tests PRIVATE tuk_agent_resources ${CMAKE_DL_LIBS})

# tuk_mhmailXX.so: a small language module beside the agent, from testlang.rc.
tuk_resource_source(test_language_source
  RC ${CMAKE_CURRENT_LIST_DIR}/testlang.rc
  SYMBOL testLanguageTable EXPORT
  DEPENDS ${PROJECT_SOURCE_DIR}/resources/resource.h)
add_library(tuk_mhmailXX SHARED ${test_language_source})
target_include_directories(tuk_mhmailXX PRIVATE ${PROJECT_SOURCE_DIR})
set_target_properties(tuk_mhmailXX PROPERTIES PREFIX "")

# The compiler itself, which the tests run on scripts of their own.
add_dependencies(resources_tests tuk_mhmailXX tuk_rcgen)
target_compile_definitions(resources_tests PRIVATE TUK_RCGEN="$<TARGET_FILE:tuk_rcgen>")
