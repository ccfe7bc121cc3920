# The application bundle: its Info.plist, the texts that macOS reads of it and its icon are made on every system, so
# that tests look at them; the bundle itself on a Mac.
#
# On a Mac `cmake --install` makes Tidwen.app, with the terminal's program in Contents/Helpers: beside "Tidwen" it could
# not lie on a disk that ignores letter case. `cpack` makes a disk image of it. script/sign-mac signs it.
include(bundle_texts)
set(bundle_parts ${CMAKE_BINARY_DIR}/bundle)

bundle_languages(languages)
set(bundle_languages "")
foreach(language ${languages})
  string(APPEND bundle_languages "\t\t<string>${language}</string>\n")
  write_bundle_texts(${bundle_parts}/texts ${language})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
      ${PROJECT_SOURCE_DIR}/resources/${language}.lproj/Localizable.strings)
endforeach()
bundle_text(bundle_service en macos.service)
foreach(usage leftovers downloads disks)
  bundle_text(bundle_usage_${usage} en macos.usage.${usage})
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/resources/macos/Info.plist.in ${bundle_parts}/Info.plist @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/resources/macos/FinderExtension-Info.plist.in ${bundle_parts}/FinderExtension-Info.plist @ONLY)

if(NOT TIDWEN_WINDOW)
  return()
endif()
add_executable(draw_icon ${PROJECT_SOURCE_DIR}/cmake/draw_icon.cpp)
target_link_libraries(draw_icon PRIVATE Qt6::Gui Qt6::Svg tidwen::warnings)
add_custom_command(OUTPUT ${bundle_parts}/Tidwen.icns
    COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen $<TARGET_FILE:draw_icon>
        ${PROJECT_SOURCE_DIR}/resources/icons/tidwen.svg ${bundle_parts}/Tidwen.icns
    DEPENDS draw_icon ${PROJECT_SOURCE_DIR}/resources/icons/tidwen.svg VERBATIM)
add_custom_target(application_icon ALL DEPENDS ${bundle_parts}/Tidwen.icns)

if(NOT APPLE)
  return()
endif()
set_target_properties(Tidwen PROPERTIES MACOSX_BUNDLE ON)
# The bundle in the build folder is run as it is: with the texts and the Info.plist of the one that is installed.
add_custom_command(TARGET Tidwen POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E copy ${bundle_parts}/Info.plist $<TARGET_BUNDLE_CONTENT_DIR:Tidwen>/Info.plist
    COMMAND ${CMAKE_COMMAND} -E create_symlink ${PROJECT_SOURCE_DIR}/resources
        $<TARGET_BUNDLE_CONTENT_DIR:Tidwen>/resources
    VERBATIM)
set(contents Tidwen.app/Contents)
install(TARGETS Tidwen BUNDLE DESTINATION .)
install(CODE "file(REMOVE \"\${CMAKE_INSTALL_PREFIX}/Tidwen.app/Contents/resources\")") # of the build folder
install(FILES ${bundle_parts}/Info.plist DESTINATION ${contents}) # in place of the one that CMake writes
install(PROGRAMS $<TARGET_FILE:tidwen> DESTINATION ${contents}/Helpers)
install(FILES ${bundle_parts}/Tidwen.icns DESTINATION ${contents}/Resources)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/ ${bundle_parts}/texts/ DESTINATION ${contents}/Resources
    FILES_MATCHING PATTERN "*.strings" PATTERN "*.stringsdict" PATTERN macos EXCLUDE PATTERN linux EXCLUDE PATTERN icons EXCLUDE)
set(extension ${contents}/PlugIns/TidwenFinder.appex/Contents)
install(PROGRAMS $<TARGET_FILE:TidwenFinder> DESTINATION ${extension}/MacOS)
install(FILES ${bundle_parts}/FinderExtension-Info.plist DESTINATION ${extension} RENAME Info.plist)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/ DESTINATION ${extension}/Resources
    FILES_MATCHING PATTERN "*.strings" PATTERN macos EXCLUDE PATTERN linux EXCLUDE PATTERN icons EXCLUDE)
install(FILES ${PROJECT_SOURCE_DIR}/docs/tidwen.1 DESTINATION ${contents}/Resources/man/man1)
install(DIRECTORY ${completions} DESTINATION ${contents}/Resources)
# The toolkit, and what else is not part of macOS, goes into the bundle.
find_program(MACDEPLOYQT macdeployqt HINTS ${Qt6_DIR}/../../../bin REQUIRED)
install(CODE "execute_process(COMMAND \"${MACDEPLOYQT}\" \"\${CMAKE_INSTALL_PREFIX}/Tidwen.app\"
    \"-executable=\${CMAKE_INSTALL_PREFIX}/Tidwen.app/Contents/Helpers/tidwen\" COMMAND_ERROR_IS_FATAL ANY)")
set(CPACK_GENERATOR DragNDrop)
