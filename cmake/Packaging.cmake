# `cmake --install` copies the DLLs, their import libraries and headers to a folder, and the target `package` to a ZIP
# file; programs then find them with find_package(Tessel). A closed library that replaces a companion is distributed by
# its vendor.
if(TESSEL_FENESTRA OR TESSEL_FACET)
  return()
endif()

include(CMakePackageConfigHelpers)
set(package_folder lib/cmake/Tessel)
install(TARGETS Tessel TesselGsm Fenestra Facet EXPORT TesselTargets
        RUNTIME DESTINATION bin ARCHIVE DESTINATION lib INCLUDES DESTINATION include)
foreach(folder IN ITEMS . companions/fenestra companions/facet companions/gsm)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${folder}/include/ DESTINATION include)
endforeach()
install(EXPORT TesselTargets NAMESPACE Tessel:: DESTINATION ${package_folder})
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/TesselConfig.cmake
     CONTENT "include(\${CMAKE_CURRENT_LIST_DIR}/TesselTargets.cmake)\n" @ONLY ESCAPE_QUOTES)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TesselConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TesselConfig.cmake ${PROJECT_BINARY_DIR}/TesselConfigVersion.cmake
        DESTINATION ${package_folder})

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_VENDOR Tessel)
include(CPack)
