# cmake --install on Linux. The bundle goes to lib/vornadel as a whole, the programs are links in
# bin. All links are relative, so that an installation below DESTDIR works where it is.
#
# Components: window, vornadelctl, virtual-hub, and common for what the first two share.

set(bundle lib/vornadel/Vornadel.app/Contents)
set(packaging "${PROJECT_SOURCE_DIR}/packaging/linux")

# vornadel_installed_program(TARGET LINK COMPONENT): into the bundle, with a link in bin.
function(vornadel_installed_program target link component)
  install(TARGETS ${target} DESTINATION ${bundle}/MacOS COMPONENT ${component})
  install(CODE "
    set(folder \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin\")
    file(MAKE_DIRECTORY \"\${folder}\")
    file(CREATE_LINK ../${bundle}/MacOS/${target} \"\${folder}/${link}\" SYMBOLIC)
    message(STATUS \"Installing: \${folder}/${link}\")"
    COMPONENT ${component})
endfunction()

vornadel_installed_program(vornadelctl vornadelctl vornadelctl)
install(PROGRAMS resources/linux/load resources/linux/unload resources/linux/reboot
  DESTINATION ${bundle}/Resources COMPONENT common)
install(FILES resources/linux/hub-access.sh resources/linux/supported-ids.awk
  DESTINATION ${bundle}/Resources COMPONENT common)
install(DIRECTORY resources/linux/HubUpdaterDriver.kext
  DESTINATION ${bundle}/Resources COMPONENT common)
# The manual, which F1 opens.
install(FILES README.md DESTINATION ${bundle}/Resources COMPONENT common)
install(DIRECTORY docs/ DESTINATION ${bundle}/Resources/docs COMPONENT common
  FILES_MATCHING PATTERN "*.md" PATTERN "*.json" PATTERN "*.txt" PATTERN "*.png" PATTERN man EXCLUDE)
install(DIRECTORY definitions/ DESTINATION share/vornadel/definitions COMPONENT common)
install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/InstallForPrefix.cmake" COMPONENT common)

install(FILES docs/man/vornadelctl.1 DESTINATION share/man/man1 COMPONENT vornadelctl)
set(completion "${CMAKE_BINARY_DIR}/completion")
install(FILES "${completion}/vornadelctl.bash" RENAME vornadelctl
  DESTINATION share/bash-completion/completions COMPONENT vornadelctl)
install(FILES "${completion}/_vornadelctl"
  DESTINATION share/zsh/vendor-completions COMPONENT vornadelctl)
install(FILES "${completion}/vornadelctl.fish"
  DESTINATION share/fish/vendor_completions.d COMPONENT vornadelctl)

install(TARGETS vornadel-virtual-hub DESTINATION bin COMPONENT virtual-hub)
install(FILES docs/man/vornadel-virtual-hub.1 DESTINATION share/man/man1 COMPONENT virtual-hub)

if(VORNADEL_WINDOW)
  vornadel_installed_program(Vornadel vornadel window)
  install(FILES "${packaging}/org.vornadel.Vornadel.desktop"
    DESTINATION share/applications COMPONENT window)
  install(FILES "${PROJECT_BINARY_DIR}/org.vornadel.Vornadel.metainfo.xml"
    DESTINATION share/metainfo COMPONENT window)
  foreach(size 48 128 256)
    install(FILES app/icons/Vornadel-${size}.png RENAME org.vornadel.Vornadel.png
      DESTINATION share/icons/hicolor/${size}x${size}/apps COMPONENT window)
  endforeach()
  install(FILES docs/man/vornadel.1 DESTINATION share/man/man1 COMPONENT window)
  install(FILES packaging/macos/Vornadel.svg RENAME org.vornadel.Vornadel.svg
    DESTINATION share/icons/hicolor/scalable/apps COMPONENT window)
endif()
