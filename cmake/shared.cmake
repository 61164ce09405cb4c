# Engine, own adjustment and host in one shared library. It shows the names of include/ alone.
add_library(vornshared SHARED $<TARGET_OBJECTS:vorn> $<TARGET_OBJECTS:vornadjust> $<TARGET_OBJECTS:vornhost>)
add_library(vorn::vorn ALIAS vornshared)
set_target_properties(vornshared PROPERTIES
  OUTPUT_NAME vorn EXPORT_NAME vorn VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
  LINK_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/exports.map)
target_link_options(vornshared PRIVATE -Wl,--version-script=${CMAKE_CURRENT_LIST_DIR}/exports.map -Wl,--no-undefined)
target_include_directories(vornshared INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>)
target_compile_features(vornshared INTERFACE cxx_std_17)
target_link_libraries(vornshared PRIVATE Threads::Threads ${CMAKE_DL_LIBS})
if(EXPAT_FOUND)
  target_link_libraries(vornshared PRIVATE EXPAT::EXPAT)
endif()
foreach(library AMD METIS)
  if(${library})
    target_link_libraries(vornshared PRIVATE ${${library}})
  endif()
endforeach()
