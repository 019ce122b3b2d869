# Profile-guided optimisation in two passes over one build tree, driven by scripts/build --pgo:
#   MORVAINE_PGO=generate  every target instrumented; the program writes its profile into
#                          MORVAINE_PGO_DIR when it ends through "quit"
#   MORVAINE_PGO=use       everything compiled again with that profile (the program that ships)
#   MORVAINE_PGO=off       a plain build, for debugging and the sanitizers
# scripts/build also brings this file into older revisions' trees (CMAKE_PROJECT_INCLUDE), so
# that a match against one compares two engines built the same way: it must rely on nothing of
# the project's CMakeLists.txt beyond project() itself.
set(MORVAINE_PGO off CACHE STRING "profile-guided build: off, generate or use")
set_property(CACHE MORVAINE_PGO PROPERTY STRINGS off generate use)
set(MORVAINE_PGO_DIR ${CMAKE_BINARY_DIR}/pgo-profile CACHE PATH "where the training run's profile goes")

if(MORVAINE_PGO STREQUAL "generate")
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Atomic counters: the input watcher and helper search threads run instrumented code too,
        # and racing increments would leave counts that contradict each other.
        add_compile_options(-fprofile-generate=${MORVAINE_PGO_DIR} -fprofile-update=prefer-atomic)
        add_link_options(-fprofile-generate=${MORVAINE_PGO_DIR})
    elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        add_compile_options(-fprofile-generate=${MORVAINE_PGO_DIR})
        add_link_options(-fprofile-generate=${MORVAINE_PGO_DIR})
    else()
        message(FATAL_ERROR "MORVAINE_PGO needs GCC or Clang")
    endif()
elseif(MORVAINE_PGO STREQUAL "use")
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        file(GLOB profile ${MORVAINE_PGO_DIR}/*.gcda)
        # What training never ran (the protocols, the tests) is compiled as without a profile
        # rather than for size; a source edited since training keeps a build that works, with a
        # warning, until scripts/build --pgo trains again.
        set(pgo_use_flags -fprofile-use=${MORVAINE_PGO_DIR} -fprofile-partial-training -Wno-missing-profile
                          -Wno-error=coverage-mismatch)
    elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        # Clang's raw profiles are merged into the one file the compiler reads.
        file(GLOB raw ${MORVAINE_PGO_DIR}/*.profraw)
        if(raw)
            string(REGEX MATCH "^[0-9]+" clang_major ${CMAKE_CXX_COMPILER_VERSION})
            find_program(MORVAINE_LLVM_PROFDATA NAMES llvm-profdata-${clang_major} llvm-profdata REQUIRED)
            execute_process(COMMAND ${MORVAINE_LLVM_PROFDATA} merge -output=${MORVAINE_PGO_DIR}/morvaine.profdata
                                    ${raw} COMMAND_ERROR_IS_FATAL ANY)
        endif()
        file(GLOB profile ${MORVAINE_PGO_DIR}/morvaine.profdata)
        # The profile is keyed by function name, and the benchmarks' main() differs from the
        # engine's, the one that was trained: that mismatch (a backend-plugin warning) is expected.
        set(pgo_use_flags -fprofile-use=${MORVAINE_PGO_DIR}/morvaine.profdata -Wno-profile-instr-unprofiled
                          -Wno-error=profile-instr-out-of-date -Wno-backend-plugin)
    else()
        message(FATAL_ERROR "MORVAINE_PGO needs GCC or Clang")
    endif()
    if(NOT profile)
        message(FATAL_ERROR "No profile in ${MORVAINE_PGO_DIR}: scripts/build --pgo makes one")
    endif()
    add_compile_options(${pgo_use_flags})
elseif(NOT MORVAINE_PGO STREQUAL "off")
    message(FATAL_ERROR "MORVAINE_PGO is off, generate or use, not ${MORVAINE_PGO}")
endif()
