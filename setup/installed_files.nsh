; The one list of what lies in the program's folder. A file that a later version has no more stays
; known to REMOVE_PROGRAMS, so that an upgrade removes it.

; Inserts a macro for every file: its folder below the program's, which begins with a backslash or
; is empty, and its name.
!macro FOR_EACH_FILE DO
  !insertmacro ${DO} "" "carrovan.exe"
  !insertmacro ${DO} "" "carrovan-cli.exe"
  !insertmacro ${DO} "" "Carrovan.txt"
  !insertmacro ${DO} "\en-us" "MevrinLg.DLL"
  !insertmacro ${DO} "\zh-cn" "MevrinLg.DLL"
  !insertmacro ${DO} "\help" "index.html"
  !insertmacro ${DO} "\help" "command-line.html"
  !insertmacro ${DO} "\help" "restore-points.html"
  !insertmacro ${DO} "\help" "package-format.html"
  !insertmacro ${DO} "\help" "troubleshooting.html"
  !insertmacro ${DO} "\help" "administrators.html"
  !insertmacro ${DO} "\help" "help.css"
  !insertmacro ${DO} "\help\pictures" "start-100.png"
  !insertmacro ${DO} "\help\pictures" "import-100.png"
  !insertmacro ${DO} "\help\pictures" "changes-100.png"
  !insertmacro ${DO} "\help\pictures" "finish-100.png"
!macroend

!macro INSTALL_FILE SUBFOLDER NAME
  SetOutPath "$INSTDIR${SUBFOLDER}"
  File "${PROGRAMS}${SUBFOLDER}\${NAME}"
!macroend

!macro REMOVE_FILE SUBFOLDER NAME
  Delete "${REMOVE_FROM}${SUBFOLDER}\${NAME}"
!macroend

; Removes exactly what was installed; what the user put there stays, with its folder.
!macro REMOVE_PROGRAMS FOLDER
  !define REMOVE_FROM "${FOLDER}"
  !insertmacro FOR_EACH_FILE REMOVE_FILE
  Delete "${FOLDER}\uninstall.exe"
  RMDir "${FOLDER}\en-us"
  RMDir "${FOLDER}\zh-cn"
  RMDir "${FOLDER}\help\pictures"
  RMDir "${FOLDER}\help"
  !undef REMOVE_FROM
!macroend
