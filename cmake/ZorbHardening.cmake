# Hardening of everything that goes into the programs: checks that a mistake runs into before it can
# be made use of, and memory that cannot be written or executed where it need not be. What it costs
# is said in SECURITY.md; the test `check.hardening` reads the finished file.
#
# Only optimised builds have it: fortified functions need the optimiser, and sanitizers find more.

include(CheckCXXCompilerFlag)

set(ZORB_HARDENING_DEFAULT OFF)
if(CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$" AND NOT ZORB_SANITIZE
   AND NOT ZORB_COVERAGE)
  set(ZORB_HARDENING_DEFAULT ON)
endif()
option(ZORB_HARDENING "Harden what is built; default: in optimised builds without sanitizers"
       ${ZORB_HARDENING_DEFAULT})

if(ZORB_HARDENING)
  # The compiler may come with a lower level of its own.
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -D_GLIBCXX_ASSERTIONS)
  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection=full)
    string(MAKE_C_IDENTIFIER "ZORB_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      add_compile_options(${flag})
    endif()
  endforeach()
  # Someone who wants the library in a shared object asks for that code, which serves both.
  if(NOT CMAKE_POSITION_INDEPENDENT_CODE)
    add_compile_options(-fPIE)
  endif()
  add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>
                   -Wl,-z,relro,-z,now -Wl,-z,noexecstack)
  # The distribution's start files carry neither mark, and one object without takes a mark from the
  # program. They leave the shadow stack alone, so that one can be given back; but they lack the
  # landing pads of indirect branches.
  if(ZORB_HAS_fcf_protection_full)
    add_link_options(-Wl,-z,shstk)
  endif()
endif()
