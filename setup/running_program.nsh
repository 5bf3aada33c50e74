; A program that runs cannot be replaced or removed: the setup and the uninstaller say so before
; they touch anything.

; Puts the path into RESULT when the system refuses to open the program for writing.
!macro TEST_RUNNING PROGRAM RESULT
  ${If} ${FileExists} "${PROGRAM}"
    ClearErrors
    FileOpen $R2 "${PROGRAM}" a
    ${If} ${Errors}
      StrCpy ${RESULT} "${PROGRAM}"
    ${Else}
      FileClose $R2
    ${EndIf}
  ${EndIf}
!macroend

; Takes the program's folder from the stack, which may be empty. Ends the setup with EXIT_RUNNING
; unless the user closes the program.
!macro DEFINE_REFUSAL PREFIX
Function ${PREFIX}RefuseWhileRunning
  Pop $R0
  ${If} $R0 == ""
    Return
  ${EndIf}
again:
  StrCpy $R1 ""
  !insertmacro TEST_RUNNING "$R0\carrovan.exe" $R1
  !insertmacro TEST_RUNNING "$R0\carrovan-cli.exe" $R1
  ${If} $R1 != ""
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "Carrovan is running. Close it, then choose \
      Retry.$\n$\n$R1" /SD IDCANCEL IDRETRY again
    SetErrorLevel ${EXIT_RUNNING}
    Abort "Nothing was changed, since Carrovan is running."
  ${EndIf}
FunctionEnd
!macroend

!insertmacro DEFINE_REFUSAL ""
!insertmacro DEFINE_REFUSAL "un."
