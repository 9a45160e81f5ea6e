# Warnings and sanitizers for the project's own code; nothing of this reaches a consumer.
add_library(qm_ordering_own_code INTERFACE)
target_compile_options(
  qm_ordering_own_code
  INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor
            -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wundef -Werror)
if(QM_ORDERING_SANITIZE)
  target_compile_options(qm_ordering_own_code INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                                        -fno-omit-frame-pointer)
  target_link_options(qm_ordering_own_code INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all)
endif()
