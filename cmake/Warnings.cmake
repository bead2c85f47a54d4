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
