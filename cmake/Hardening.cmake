# SPDX-License-Identifier: Apache-2.0
# What every target is protected with where compiler and linker have it, and what makes two builds of the same sources alike.
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)
include(CheckPIESupported)

check_pie_supported() # else programs that are compiled for it are not linked for it
set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)

if(NOT ZARNNET_SANITIZE)
  foreach(flag IN ITEMS -fstack-protector-strong -fstack-clash-protection)
    string(MAKE_C_IDENTIFIER "ZARNNET_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      target_compile_options(zarnnet_build_flags INTERFACE ${flag})
    endif()
  endforeach()
  foreach(flag IN ITEMS -Wl,-z,relro -Wl,-z,now)
    string(MAKE_C_IDENTIFIER "ZARNNET_HAS${flag}" known)
    check_linker_flag(CXX ${flag} ${known})
    if(${known})
      target_link_options(zarnnet_build_flags INTERFACE ${flag})
    endif()
  endforeach()
  # A packager's own level stays; a compiler's is raised. Without optimisation the C library refuses it.
  string(TOUPPER "${CMAKE_BUILD_TYPE}" type)
  if(NOT "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${type}}" MATCHES "_FORTIFY_SOURCE")
    target_compile_options(zarnnet_build_flags
                           INTERFACE $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=3>)
  endif()
endif()

# Most of a short program's time is the loading of libraries, the C++ runtime's above all. What is linked so starts without it.
add_library(zarnnet_own_runtime INTERFACE)
set(ZARNNET_STANDALONE OFF)
if(ZARNNET_STANDALONE_TOOL AND BUILD_SHARED_LIBS AND NOT ZARNNET_SANITIZE AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  check_linker_flag(CXX -static-libstdc++ ZARNNET_HAS_static_libstdcxx)
  set(ZARNNET_STANDALONE ${ZARNNET_HAS_static_libstdcxx})
endif()
if(ZARNNET_STANDALONE)
  target_link_options(zarnnet_own_runtime INTERFACE -static-libstdc++ -static-libgcc)
endif()

# No folder's name in what is built, be it by __FILE__, in debug information or as a path of libraries.
check_cxx_compiler_flag(-ffile-prefix-map=/a=/b ZARNNET_HAS_file_prefix_map)
if(ZARNNET_HAS_file_prefix_map)
  foreach(folder IN ITEMS ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR})
    target_compile_options(zarnnet_build_flags
                           INTERFACE "$<${optimised}:-ffile-prefix-map=${folder}=.>")
  endforeach()
endif()
