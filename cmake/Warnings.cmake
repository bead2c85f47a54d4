# SPDX-License-Identifier: Apache-2.0
# Every target of the project is built with the same warnings. They are errors in the project's own presets alone: another
# compiler has other ones. (-Wpedantic is left out: it refuses the %m of syslog.)
add_library(zarnnet_build_flags INTERFACE)
target_compile_options(
  zarnnet_build_flags
  INTERFACE -Wall
            -Wextra
            $<$<BOOL:${ZARNNET_WERROR}>:-Werror>
            -Wshadow
            -Wformat=2
            -Wconversion
            -Wcast-align
            -Wnull-dereference
            $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
            $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>)
if(ZARNNET_SANITIZE)
  target_compile_options(zarnnet_build_flags INTERFACE -fsanitize=${ZARNNET_SANITIZE}
                                                       -fno-sanitize-recover=all
                                                       -fno-omit-frame-pointer)
  target_link_options(zarnnet_build_flags INTERFACE -fsanitize=${ZARNNET_SANITIZE})
else()
  target_link_options(zarnnet_build_flags INTERFACE -Wl,--no-undefined)
endif()

# For targets that are full of other libraries' templates: inlined out of those, code is warned about as if it stood here, and
# g++ 12 takes the short text inside a std::string that moves for one that goes beyond it. The last options win, so this
# comes behind zarnnet_build_flags.
add_library(zarnnet_false_alarms INTERFACE)
target_compile_options(
  zarnnet_false_alarms
  INTERFACE -Wno-null-dereference
            $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overflow;-Wno-stringop-overread;-Wno-restrict;-Wno-maybe-uninitialized>)
