# Every header compiles alone: one translation unit for each.
file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
     include/*.h foundation/*.h messaging/*.h net/*.h media/*.h system/*.h ui/*.h companions/*.h tests/support/*.h)
set(units)
foreach(header IN LISTS headers)
  string(MAKE_C_IDENTIFIER ${header} name)
  set(unit ${CMAKE_BINARY_DIR}/headers/${name}.cpp)
  file(CONFIGURE OUTPUT ${unit} CONTENT "#include \"${PROJECT_SOURCE_DIR}/${header}\"\n")
  list(APPEND units ${unit})
endforeach()

add_library(headers_alone OBJECT ${units})
tessel_compile(headers_alone)
target_include_directories(headers_alone PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(headers_alone PRIVATE Tessel)
target_include_directories(headers_alone SYSTEM PRIVATE
  $<$<TARGET_EXISTS:gtest>:$<TARGET_PROPERTY:gtest,INTERFACE_INCLUDE_DIRECTORIES>>)
