# How Foundation is compiled against and linked: Apple's own, or GNUstep's with GCC.
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

if(NOT APPLE)
  find_program(GNUSTEP_CONFIG gnustep-config REQUIRED)
  # Debian's GNUstep is built for GCC's runtime, whatever compiles the C++.
  find_program(CMAKE_OBJC_COMPILER gcc REQUIRED)
  find_program(CMAKE_OBJCXX_COMPILER g++ REQUIRED)
endif()
enable_language(OBJC)
enable_language(OBJCXX)

function(zr7700_use_foundation target)
  # CMake's own standard property does not reach GCC's Objective-C++.
  target_compile_options(${target} PRIVATE
    $<$<COMPILE_LANGUAGE:OBJCXX>:-std=c++20> $<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:-Wall -Wextra>)
  if(ZR7700_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:-Werror>)
  endif()
  if(APPLE)
    target_link_libraries(${target} PUBLIC "-framework Foundation")
    return()
  endif()
  execute_process(COMMAND ${GNUSTEP_CONFIG} --objc-flags
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${GNUSTEP_CONFIG} --base-libs
    OUTPUT_VARIABLE libraries OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  separate_arguments(libraries UNIX_COMMAND "${libraries}")
  # Only what the language needs: optimisation, dependency files, warnings and the folders in the
  # builder's home are not GNUstep's business.
  set(folders ${flags})
  list(FILTER folders INCLUDE REGEX "^-I/(usr|opt)")
  list(TRANSFORM folders REPLACE "^-I" "")
  list(FILTER flags INCLUDE REGEX "^(-DGNU|-D_NATIVE|-f|-pthread)")
  list(FILTER libraries EXCLUDE REGEX "^(-rdynamic|-L(/root|/home))")
  target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:${flags}>")
  target_include_directories(${target} SYSTEM PRIVATE ${folders})
  target_link_libraries(${target} PUBLIC ${libraries})
endfunction()

# The folder, relative to the program `name`, where the main bundle of a program outside a bundle
# finds its tables.
function(zr7700_bundle_resources name result)
  if(APPLE)
    set(${result} Resources PARENT_SCOPE)
  else()
    set(${result} Resources/${name}/Resources PARENT_SCOPE)
  endif()
endfunction()

# Two string tables for a test of LocalizedText, put where the test's own main bundle looks.
function(zr7700_foundation_test_tables test)
  zr7700_bundle_resources(${test} resources)
  foreach(language de fr)
    file(WRITE ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${resources}/${language}.lproj/Localizable.strings
      "\"Out of discs: %s\" = \"${language} \\U00e4: %s\";\n")
  endforeach()
endfunction()
