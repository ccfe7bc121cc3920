# Installs the program, its texts, the man page and the shell completions. The program finds its texts
# relative to itself, so the installation is relocatable.
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

install(TARGETS tidwen RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(TIDWEN_WINDOW AND NOT APPLE) # on a Mac it would lie beside "tidwen" on a disk that ignores letter case
  install(TARGETS Tidwen RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tidwen
    FILES_MATCHING PATTERN "*.strings" PATTERN "*.stringsdict")
install(FILES ${PROJECT_SOURCE_DIR}/docs/tidwen.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${completions}/bash RENAME tidwen DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${completions}/zsh RENAME _tidwen DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES ${completions}/fish RENAME tidwen.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
