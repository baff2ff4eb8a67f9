# How every target of this project is compiled.

if(PROJECT_IS_TOP_LEVEL)
  if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
  endif()
  find_program(CCACHE ccache)
  if(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
  endif()
endif()

add_library(trunnion_build_options INTERFACE)
target_compile_features(trunnion_build_options INTERFACE cxx_std_17)

# Results are the same to the last bit in every build: no contraction into fused multiply-adds,
# nothing that reorders a sum.
target_compile_options(trunnion_build_options INTERFACE
  -ffp-contract=off
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<BOOL:${PROJECT_IS_TOP_LEVEL}>:-Werror> # a newer compiler's warning must not stop a host's build
  $<$<CXX_COMPILER_ID:Clang>:-Wreserved-identifier>)

if(TRUNNION_SANITIZE)
  target_compile_options(trunnion_build_options INTERFACE
    -fsanitize=${TRUNNION_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(trunnion_build_options INTERFACE -fsanitize=${TRUNNION_SANITIZE})
endif()
if(TRUNNION_FUZZ)
  target_compile_options(trunnion_build_options INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(trunnion_build_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# trunnion_join_folders(TARGET): in builds with CMAKE_UNITY_BUILD the sources of each folder are
# compiled together, which takes a third of the time.
function(trunnion_join_folders target)
  get_target_property(sources ${target} SOURCES)
  foreach(source IN LISTS sources)
    cmake_path(GET source PARENT_PATH folder)
    if(NOT IS_ABSOLUTE ${source}) # one that is generated stays by itself
      set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${folder})
    endif()
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
endfunction()
