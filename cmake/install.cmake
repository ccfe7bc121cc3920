# Installs the programs, their texts, the man page and the shell completions, in two components: what the terminal needs
# ("tidwen") and the window ("window"). The programs find the texts relative to themselves, so the installation is
# relocatable. On a Mac both are in one bundle (bundle.cmake).
include(GNUInstallDirs)

set(completions ${CMAKE_BINARY_DIR}/completions)
foreach(shell bash zsh fish)
  list(APPEND completion_files ${completions}/${shell})
  add_custom_command(OUTPUT ${completions}/${shell}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${completions}
      COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C XDG_CONFIG_HOME=${completions} # in English, whoever builds
          $<TARGET_FILE:tidwen> completions ${shell} > ${completions}/${shell}
      DEPENDS tidwen
      VERBATIM)
endforeach()
add_custom_target(completions ALL DEPENDS ${completion_files})
if(APPLE AND TIDWEN_WINDOW)
  return()
endif()

set(resources ${PROJECT_SOURCE_DIR}/resources)
install(TARGETS tidwen RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tidwen)
install(DIRECTORY ${resources}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tidwen COMPONENT tidwen
    FILES_MATCHING PATTERN "*.strings" PATTERN "*.stringsdict"
    PATTERN icons EXCLUDE PATTERN linux EXCLUDE PATTERN macos EXCLUDE)
install(FILES ${PROJECT_SOURCE_DIR}/docs/tidwen.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tidwen)
install(FILES ${completions}/bash RENAME tidwen
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tidwen)
install(FILES ${completions}/zsh RENAME _tidwen DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT zsh)
install(FILES ${completions}/fish RENAME tidwen.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tidwen)
if(TIDWEN_WINDOW)
  set(name com.corvella.tidwen)
  install(TARGETS Tidwen RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT window)
  install(FILES ${resources}/linux/${name}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT window)
  install(FILES ${resources}/icons/tidwen.svg RENAME ${name}.svg
      DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT window)
endif()
