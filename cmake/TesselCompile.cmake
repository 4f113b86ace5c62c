# How every target of the project is compiled and linked.
function(tessel_compile target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_definitions(${target} PRIVATE
    UNICODE _UNICODE WINVER=0x0601 _WIN32_WINNT=0x0601 WIN32_LEAN_AND_MEAN NOMINMAX)

  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    # The layout checks apply offsetof to classes with virtual functions, which this compiler supports.
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wpedantic -Wshadow -Wno-invalid-offsetof)
    # Programs must need no DLLs besides Tessel's and Windows' own.
    target_link_options(${target} PRIVATE -static)
  elseif(MSVC)
    target_compile_options(${target} PRIVATE /W4 /permissive- /utf-8)
  endif()
  if(TESSEL_WARNINGS_AS_ERRORS)
    set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
  endif()

  if(TESSEL_CHECKED)
    target_compile_options(${target} PRIVATE -fsanitize=undefined -fsanitize-undefined-trap-on-error)
    target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)
  endif()
endfunction()
