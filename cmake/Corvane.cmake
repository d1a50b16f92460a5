include(GNUInstallDirs)

# corvane_library(text) makes the static library corvane_text of this folder's sources. Further arguments name the
# folders below it, whose libraries it links.
function(corvane_library name)
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  add_library(corvane_${name} STATIC ${sources})
  target_include_directories(corvane_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  foreach(below IN LISTS ARGN)
    target_link_libraries(corvane_${name} PUBLIC corvane_${below})
  endforeach()
endfunction()

# corvane_test(text) makes the test program of this folder: it links the folder's library and what stands below it.
function(corvane_test name)
  file(GLOB sources CONFIGURE_DEPENDS *_test.cpp)
  add_executable(test_${name} ${sources})
  target_link_libraries(test_${name} PRIVATE GTest::gtest GTest::gtest_main)
  foreach(library IN LISTS ARGN)
    target_link_libraries(test_${name} PRIVATE corvane_${library})
  endforeach()
  add_test(NAME ${name} COMMAND test_${name} --gtest_brief=1)
  set_tests_properties(${name} PROPERTIES TIMEOUT 120)
endfunction()
