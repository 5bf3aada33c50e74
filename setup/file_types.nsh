; Packages open in the wizard by a double click. They are associated for the user whom the setup
; installs for, so below HKEY_CURRENT_USER.

!define CLASSES "Software\Classes"
!define PACKAGE_CLASS "Carrovan.Package"

; Inserts a macro for every extension of a package.
!macro FOR_EACH_EXTENSION DO
  !insertmacro ${DO} ".ucex"
  !insertmacro ${DO} ".ucx"
!macroend

; Where somebody else opens such files, for this user or for the whole machine, he goes on doing so
; and Carrovan is one more program that Windows offers for them.
!macro ASSOCIATE EXTENSION
  WriteRegStr HKCU "${CLASSES}\${EXTENSION}\OpenWithProgids" "${PACKAGE_CLASS}" ""
  ReadRegStr $R0 HKCU "${CLASSES}\${EXTENSION}" ""
  ${If} $R0 == ""
    ReadRegStr $R0 HKLM "${CLASSES}\${EXTENSION}" ""
  ${EndIf}
  ${If} $R0 == ""
    WriteRegStr HKCU "${CLASSES}\${EXTENSION}" "" "${PACKAGE_CLASS}"
  ${EndIf}
!macroend

; Takes back what ASSOCIATE has written, unless it is somebody else's by now.
!macro DISSOCIATE EXTENSION
  DeleteRegValue HKCU "${CLASSES}\${EXTENSION}\OpenWithProgids" "${PACKAGE_CLASS}"
  DeleteRegKey /ifempty HKCU "${CLASSES}\${EXTENSION}\OpenWithProgids"
  ReadRegStr $R0 HKCU "${CLASSES}\${EXTENSION}" ""
  ${If} $R0 == "${PACKAGE_CLASS}"
    DeleteRegValue HKCU "${CLASSES}\${EXTENSION}" ""
  ${EndIf}
  DeleteRegKey /ifempty HKCU "${CLASSES}\${EXTENSION}"
!macroend

; Explorer shows the icon, or shows it no more, as soon as it is told.
!macro REGISTER_FILE_TYPES
  !define CLASS_KEY "${CLASSES}\${PACKAGE_CLASS}"
  WriteRegStr HKCU "${CLASS_KEY}" "" "User Configuration File"
  WriteRegStr HKCU "${CLASS_KEY}\DefaultIcon" "" "$INSTDIR\carrovan.exe,0"
  WriteRegStr HKCU "${CLASS_KEY}\shell\open\command" "" '"$INSTDIR\carrovan.exe" "%1"'
  !undef CLASS_KEY
  !insertmacro FOR_EACH_EXTENSION ASSOCIATE
  ${NotifyShell_AssocChanged}
!macroend

!macro UNREGISTER_FILE_TYPES
  !insertmacro FOR_EACH_EXTENSION DISSOCIATE
  DeleteRegKey HKCU "${CLASSES}\${PACKAGE_CLASS}"
  ${NotifyShell_AssocChanged}
!macroend
