# What `cpack` makes: packages for Debian here (`cpack -G DEB`), a disk image of the bundle on a Mac. On Debian the
# terminal is "tidwen", and the window, which needs Qt, is "tidwen-window". script/check-packages installs, runs and
# removes them.
set(CPACK_PACKAGE_NAME tidwen)
set(CPACK_PACKAGE_VENDOR Corvella)
set(CPACK_PACKAGE_CONTACT "Corvella <tidwen@corvella.example>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_VERBATIM_VARIABLES ON)
if(NOT APPLE)
  set(CPACK_GENERATOR DEB)
  set(CPACK_STRIP_FILES ON) # on a Mac it would break what the linker has signed
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  # Where Debian's zsh looks; elsewhere it is the folder of the component "zsh".
  install(FILES ${completions}/zsh RENAME _tidwen DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions
      COMPONENT tidwen_zsh EXCLUDE_FROM_ALL)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_COMPONENTS_ALL tidwen tidwen_zsh)
  set(CPACK_COMPONENT_TIDWEN_GROUP terminal)
  set(CPACK_COMPONENT_TIDWEN_ZSH_GROUP terminal)
  if(TIDWEN_WINDOW)
    list(APPEND CPACK_COMPONENTS_ALL window)
    set(CPACK_COMPONENT_WINDOW_GROUP window)
  endif()
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SECTION utils)
  set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://tidwen.corvella.example)
  set(CPACK_DEBIAN_TERMINAL_PACKAGE_NAME tidwen)
  set(CPACK_DEBIAN_TERMINAL_PACKAGE_RECOMMENDS "libcurl4, libnotify-bin")
  set(CPACK_DEBIAN_TERMINAL_DESCRIPTION "Take an application off a Mac's disk with what it left behind
Moves an application and everything that belongs to it into the Trash of the
disk, from where it can be put back. Works on the disk of a Mac in a folder.")
  set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME tidwen-window)
  set(CPACK_DEBIAN_WINDOW_PACKAGE_DEPENDS "tidwen (= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_WINDOW_PACKAGE_RECOMMENDS fonts-inter)
  set(CPACK_DEBIAN_WINDOW_DESCRIPTION "Take an application off a Mac's disk with what it left behind (window)
The window of Tidwen, over the same core as the terminal's program.")
endif()
include(CPack)
