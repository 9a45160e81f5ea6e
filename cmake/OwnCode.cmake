# Warnings and sanitizers for the project's own code; nothing of this reaches a consumer.
add_library(qm_ordering_own_code INTERFACE)
target_compile_options(
  qm_ordering_own_code
  INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wcast-qual -Wformat=2 -Wundef -Werror
            $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
if(QM_ORDERING_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "QM_ORDERING_FUZZ needs clang++, whose fuzzer it uses: configure with "
                        "-DCMAKE_CXX_COMPILER=clang++, in a build folder of its own")
  endif()
  # The fuzzer's own part is linked to the targets alone.
  target_compile_options(qm_ordering_own_code INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(QM_ORDERING_SANITIZE OR QM_ORDERING_FUZZ)
  target_compile_options(qm_ordering_own_code INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                                        -fno-omit-frame-pointer)
  target_link_options(qm_ordering_own_code INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # Optimising, g++ 12 sees overlaps in std::string's operator+ that cannot happen (GCC bug 105651).
  target_compile_options(qm_ordering_own_code INTERFACE -Wno-restrict)
endif()
