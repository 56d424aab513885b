# The library's subsystems are layers, each an object library that sees the public
# headers, its own headers and those of the layers it names, and no others:
#
#   korean (engine/korean) <- toolkit
#   core <- engine <- dsig, xenc, pki <- soapsec, ebxml <- api      mime stands alone
#
# A layer sees another only through a symbolic link in a view of its own under
# the build tree, so an #include of a header from a layer it does not name fails
# to compile: the build keeps every dependency pointing down. The names a layer
# uses are PRIVATE to it; whoever needs a lower layer names it too.

add_library(vqxml_layer_base INTERFACE)
target_compile_definitions(vqxml_layer_base INTERFACE VQXML_BUILDING)
target_include_directories(vqxml_layer_base INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
target_link_libraries(vqxml_layer_base INTERFACE vqxml::deps)

# vqxml_layer(NAME DIR <folder> [USES <layer>...] SOURCES <file>...)
# Sources are relative to the calling CMakeLists.txt.
function(vqxml_layer name)
  cmake_parse_arguments(LAYER "" "DIR" "USES;SOURCES" ${ARGN})
  set(view ${PROJECT_BINARY_DIR}/layers/${name})
  get_filename_component(parent ${view}/${LAYER_DIR} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${LAYER_DIR} ${view}/${LAYER_DIR} SYMBOLIC)

  add_library(vqxml_${name} OBJECT ${LAYER_SOURCES})
  set_target_properties(vqxml_${name} PROPERTIES
    CXX_VISIBILITY_PRESET hidden C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_include_directories(vqxml_${name} PUBLIC $<BUILD_INTERFACE:${view}>)
  target_link_libraries(vqxml_${name} PUBLIC vqxml_layer_base)
  foreach(used IN LISTS LAYER_USES)
    target_link_libraries(vqxml_${name} PRIVATE vqxml_${used})
  endforeach()
  set_property(GLOBAL APPEND PROPERTY VQXML_LAYERS vqxml_${name})
endfunction()
