# The shared library, its headers, the CMake package, the type library's text and the designer plugin.
include(CMakePackageConfigHelpers)

add_library(VellumKit5 SHARED $<TARGET_OBJECTS:vellum_objects> ${VELLUM_RESOURCES})
target_link_libraries(VellumKit5 PUBLIC Qt6::Core Qt6::Gui Qt6::Widgets PRIVATE Qt6::Network Qt6::PrintSupport Qt6::Svg
                      PkgConfig::GUMBO ${QSCINTILLA_LIBRARY})
target_include_directories(VellumKit5 INTERFACE $<INSTALL_INTERFACE:include/VellumKit5/all>
                           $<INSTALL_INTERFACE:include>)
set_target_properties(VellumKit5 PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 5 LINKER_LANGUAGE CXX)

install(TARGETS VellumKit5 EXPORT VellumKit5Targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT VellumKit5Targets DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VellumKit5)
install(DIRECTORY include/VellumKit5 DESTINATION include)
# What the public headers include stands below `all`, spelled as in the sources.
foreach(folder base engine/dom engine/surface support platform commands control)
    install(DIRECTORY ${folder}/ DESTINATION include/VellumKit5/all/${folder} FILES_MATCHING PATTERN "*.h")
endforeach()
file(WRITE ${CMAKE_BINARY_DIR}/VellumKit5Config.cmake
     "include(CMakeFindDependencyMacro)\nfind_dependency(Qt6 COMPONENTS Core Gui Widgets)\n"
     "include(\${CMAKE_CURRENT_LIST_DIR}/VellumKit5Targets.cmake)\n")
write_basic_package_version_file(${CMAKE_BINARY_DIR}/VellumKit5ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/VellumKit5Config.cmake ${CMAKE_BINARY_DIR}/VellumKit5ConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VellumKit5)
install(FILES LICENSE README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

option(VELLUM_DESIGNER "Build the Qt Designer plugin" ON)
if(VELLUM_DESIGNER AND NOT VELLUM_SANITIZE)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Designer)
    add_library(vellumdesigner MODULE designer/Vellum5Plugin.cpp designer/Vellum5Plugin.h)
    target_include_directories(vellumdesigner PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/include)
    target_link_libraries(vellumdesigner PRIVATE VellumKit5 Qt6::Designer Qt6::Widgets)
    install(TARGETS vellumdesigner LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/qt6/plugins/designer)
endif()
