# What every target of this project shares: the language, the warnings, hidden symbols, hardening,
# the sanitizers, and run paths.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

# Part of the libraries' file names. Until 1.0 a minor version may change the layout of classes.
set(ulo_soversion ${PROJECT_VERSION_MAJOR})
if(PROJECT_VERSION_MAJOR EQUAL 0)
  string(APPEND ulo_soversion .${PROJECT_VERSION_MINOR})
endif()

# Libraries that are opened by name and never linked. Two versions can be installed together.
set(ulo_private_libdir ${CMAKE_INSTALL_LIBDIR}/ulotaskengine/${ulo_soversion})
# Run paths. In /usr the loader knows the directory of the other libraries; any other prefix can be
# moved after the installation. Each directory costs the loader a search for every library that is
# not in it, so only what opens private libraries has theirs.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(CMAKE_INSTALL_RPATH "")
  set(ulo_library_rpath "")
  set(ulo_private_library_rpath ${CMAKE_INSTALL_PREFIX}/${ulo_private_libdir})
  set(ulo_library_private_rpath ${CMAKE_INSTALL_PREFIX}/${ulo_private_libdir})
  set(ulo_program_private_rpath ${CMAKE_INSTALL_PREFIX}/${ulo_private_libdir})
else()
  set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  set(ulo_library_rpath "$ORIGIN")
  set(ulo_private_library_rpath "$ORIGIN/../.." "$ORIGIN")
  set(ulo_library_private_rpath "$ORIGIN/ulotaskengine/${ulo_soversion}")
  set(ulo_program_private_rpath "$ORIGIN/../${ulo_private_libdir}")
endif()

# ulo_opens_private_libraries(NAME) is for a library or program whose code opens one of them: the
# loader uses only the run path of the file that contains the call.
function(ulo_opens_private_libraries name)
  get_target_property(type ${name} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(path ${CMAKE_INSTALL_RPATH} ${ulo_program_private_rpath})
  else()
    set(path ${ulo_library_rpath} ${ulo_library_private_rpath})
  endif()
  set_target_properties(${name} PROPERTIES INSTALL_RPATH "${path}")
endfunction()

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

option(ULO_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)
if(ULO_WARNINGS_AS_ERRORS)
  # Before the caller's flags, so that -Wno-error among them has effect.
  string(PREPEND CMAKE_C_FLAGS "-Werror ")
  string(PREPEND CMAKE_CXX_FLAGS "-Werror ")
endif()

# Distributions pass flags like these themselves.
option(ULO_HARDENING
  "Compile with stack protector and checked C functions, and link with read-only relocations" OFF)
if(ULO_HARDENING)
  add_compile_options(-fstack-protector-strong
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
  add_link_options(-Wl,-z,relro -Wl,-z,now)
endif()
# Lets the linker leave out functions that a program does not call (--gc-sections).
if(CMAKE_BUILD_TYPE MATCHES "^(Release|None|)$")
  add_compile_options(-ffunction-sections -fdata-sections)
endif()
# Makes executables position-independent, too, where the compiler does not do so by itself.
include(CheckPIESupported)
check_pie_supported()

# GCC applies -ffile-prefix-map, which distributions pass, before -fmacro-prefix-map.
set(ulo_prefix_map -fmacro-prefix-map)
if(CMAKE_CXX_FLAGS MATCHES "-ffile-prefix-map=")
  set(ulo_prefix_map -ffile-prefix-map)
endif()
add_library(ulo_build_flags INTERFACE)
target_compile_options(ulo_build_flags INTERFACE
  -Wall -Wextra -Wpedantic
  # Log lines name sources relative to the tree, wherever it was built.
  ${ulo_prefix_map}=${CMAKE_SOURCE_DIR}/=
  # The texts of statements are printf templates, also those without arguments.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-format-security>
  # GCC 12 sees overlaps in "text" + std::string at -O3 that are not there.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)

# Files over 2 GiB and dates after 2038 on 32-bit systems. The types of installed headers do not
# depend on these macros.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  target_compile_definitions(ulo_build_flags INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()

# ulo_preloaded(NAME) is for a library that replaces functions of the C library. These macros would
# give its functions other names.
function(ulo_preloaded name)
  target_link_libraries(${name} PRIVATE ulo_build_flags ${CMAKE_DL_LIBS})
  target_compile_options(${name} PRIVATE -U_FILE_OFFSET_BITS -U_TIME_BITS)
endfunction()

# The sanitizers and the coverage counters go into everything, whoever compiles it.
if(ULO_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
# Everything tells the fuzzer where it has been; only the fuzzers themselves link its main loop.
if(ULO_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()
if(ULO_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

option(ULO_PRECOMPILED_HEADERS
  "Compile common headers once: about half the build time, but a missing #include goes unnoticed"
  OFF)

option(ULO_JOINED_SOURCES
  "Compile up to thirty sources as one: builds everything in less time, but a change of one source \
compiles the others, too" OFF)
if(ULO_JOINED_SOURCES)
  set(CMAKE_UNITY_BUILD ON)
  set(CMAKE_UNITY_BUILD_BATCH_SIZE 30)
  # Takes a class that is declared in one source for one that is declared in a header.
  add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
endif()

# ulo_precompile(NAME HEADERS) compiles cmake/precompiled/HEADERS.h for the sources of NAME, or uses
# what ulo_share_precompiled has compiled.
function(ulo_precompile name headers)
  if(NOT ULO_PRECOMPILED_HEADERS)
    return()
  endif()
  # A compiler cache needs it to tell what a source includes.
  target_compile_options(${name} PRIVATE -fpch-preprocess)
  # GCC 12 and later warn of overflows in std::string that cannot happen. They hide that in system
  # headers, but not once they are precompiled. Builds without precompiled headers keep these
  # warnings.
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_compile_options(${name} PRIVATE
      -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
  endif()
  if(TARGET ulo_precompiled_${headers} AND NOT name STREQUAL ulo_precompiled_${headers})
    target_precompile_headers(${name} REUSE_FROM ulo_precompiled_${headers})
  else()
    target_precompile_headers(${name} PRIVATE
      $<$<COMPILE_LANGUAGE:CXX>:${CMAKE_SOURCE_DIR}/cmake/precompiled/${headers}.h>)
  endif()
endfunction()

# ulo_share_precompiled(HEADERS LIBRARIES x y [EXECUTABLES] [OPTIONS ...]) compiles HEADERS once for
# all libraries (or executables) that name them after this. These must have the same compiler
# options and may define more macros than LIBRARIES do, but not fewer.
function(ulo_share_precompiled headers)
  if(NOT ULO_PRECOMPILED_HEADERS)
    return()
  endif()
  cmake_parse_arguments(arg "EXECUTABLES" "" "LIBRARIES;OPTIONS" ${ARGN})
  set(holder ulo_precompiled_${headers})
  set(source ${CMAKE_SOURCE_DIR}/cmake/precompiled/holder.cpp)
  if(arg_EXECUTABLES)
    add_executable(${holder} EXCLUDE_FROM_ALL ${source})
  else()
    add_library(${holder} OBJECT EXCLUDE_FROM_ALL ${source})
  endif()
  target_link_libraries(${holder} PRIVATE ulo_build_flags ${arg_LIBRARIES})
  target_compile_options(${holder} PRIVATE ${arg_OPTIONS})
  ulo_precompile(${holder} ${headers})
endfunction()

# ulo_library(NAME [PRIVATE_SYMBOLS prefix...]) makes NAME_objects, to which the rooms add their
# sources with target_sources, and the shared library NAME made of them. Tests link NAME_objects
# when they look at something that NAME keeps hidden.
#
# C++ names that begin like one of PRIVATE_SYMBOLS are exported for our own libraries and programs
# only: no installed header declares them. They carry a symbol version that says so.
function(ulo_library name)
  cmake_parse_arguments(arg "" "" "PRIVATE_SYMBOLS" ${ARGN})
  add_library(${name}_objects OBJECT)
  target_link_libraries(${name}_objects PRIVATE ulo_build_flags)
  add_library(${name} SHARED)
  target_link_libraries(${name} PRIVATE ${name}_objects)
  target_compile_features(${name} INTERFACE cxx_std_20)
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${ulo_soversion} INSTALL_RPATH "${ulo_library_rpath}")
  set(ulo_symbol_version "")
  set(ulo_private_symbols "")
  if(arg_PRIVATE_SYMBOLS)
    set(ulo_symbol_version "ULO_PRIVATE_${ulo_soversion} ")
    list(JOIN arg_PRIVATE_SYMBOLS "*; " patterns)
    set(ulo_private_symbols "  global:\n    extern \"C++\" { ${patterns}*; };\n")
  endif()
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${name}.map)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/symbols.map.in ${script} @ONLY)
  target_link_options(${name} PRIVATE -Wl,--version-script=${script})
  set_target_properties(${name} PROPERTIES LINK_DEPENDS ${script})
endfunction()
