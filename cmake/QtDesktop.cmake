# libOrvoBasic_Qt: the Qt 6 desktop. Built when Qt 6 Widgets is installed;
# the interpreter library never depends on it, and the runner loads it with
# dlopen only for --ui=gui.
find_package(Qt6 QUIET COMPONENTS Widgets)
if(NOT Qt6Widgets_FOUND OR OB_FUZZ)
  message(STATUS "Qt 6 Widgets not found: the Qt desktop is not built")
  return()
endif()

file(GLOB OB_QT_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/src/ui/qt/*.cpp)
# Compiled once, like the interpreter: the library is linked from these
# objects and the Qt tests link them directly.
add_library(ob_qt_objects OBJECT ${OB_QT_SOURCES})
set_target_properties(ob_qt_objects PROPERTIES
  C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
target_include_directories(ob_qt_objects PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/src
  PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>)
target_link_libraries(ob_qt_objects PUBLIC Qt6::Widgets)

add_library(OrvoBasic_Qt SHARED $<TARGET_OBJECTS:ob_qt_objects>)
target_link_libraries(OrvoBasic_Qt PRIVATE OrvoBasic_Emb Qt6::Widgets)
set_target_properties(OrvoBasic_Qt PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
install(TARGETS OrvoBasic_Qt LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
set(OB_HAVE_QT ON)
