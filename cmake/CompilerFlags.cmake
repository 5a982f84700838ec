# SPDX-License-Identifier: MIT
# Flags of every target of the project: warnings, hardening, sanitizers.
add_library(zviptv_flags INTERFACE)

target_compile_options(zviptv_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wimplicit-fallthrough -Wcast-align
    $<$<BOOL:${ZVIPTV_WERROR}>:-Werror>
    -fvisibility=hidden -fvisibility-inlines-hidden
    -fstack-protector-strong
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
target_link_options(zviptv_flags INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)

# g++ takes a source that is compiled together with others for a header, which should have no unnamed namespaces.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(zviptv_flags INTERFACE -Wno-subobject-linkage)
endif()

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    # Streams over 2 GiB are read, too.
    target_compile_definitions(zviptv_flags INTERFACE _FILE_OFFSET_BITS=64)
endif()

if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|amd64|AMD64")
    target_compile_options(zviptv_flags INTERFACE -fstack-clash-protection -fcf-protection)
endif()

if(ZVIPTV_SANITIZE)
    target_compile_options(zviptv_flags INTERFACE
        -fsanitize=${ZVIPTV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(zviptv_flags INTERFACE -fsanitize=${ZVIPTV_SANITIZE})
else()
    target_link_options(zviptv_flags INTERFACE -Wl,-z,defs)
    target_compile_definitions(zviptv_flags INTERFACE
        _GLIBCXX_ASSERTIONS
        $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
endif()
