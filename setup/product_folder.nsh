; Where the CAD product's programs are. Carrovan loads the product's tarvik.dll from there.

!define PRODUCT_PROGRAM "VANTRIC.exe"
!define PRODUCT_SWITCH "/PRODUCT="
!define APP_PATHS "SOFTWARE\Microsoft\Windows\CurrentVersion\App Paths\${PRODUCT_PROGRAM}"

; Jumps out of the function with the folder as the product's, when the library lies there.
!macro TAKE_IF_LIBRARY_IN FOLDER
  ${If} "${FOLDER}" != ""
  ${AndIf} ${FileExists} "${FOLDER}\tarvik.dll"
    StrCpy $ProductFolder "${FOLDER}"
    Return
  ${EndIf}
!macroend

; Sets ProductFolder: by the switch, as noted by a former setup, or as the product has registered
; its program. Empty when it is not known. Ends the setup with EXIT_NO_LIBRARY when there is a
; switch with a folder that is not the product's.
Function FindProductFolder
  Call ReadProductSwitch
  Pop $R0
  ${If} $R0 != ""
    GetFullPathName $R1 $R0
    !insertmacro TAKE_IF_LIBRARY_IN $R1
    MessageBox MB_OK|MB_ICONSTOP "There is no tarvik.dll in the folder that ${PRODUCT_SWITCH} \
      names. Name the folder of the CAD product's programs.$\n$\n$R0" /SD IDOK
    SetErrorLevel ${EXIT_NO_LIBRARY}
    Quit
  ${EndIf}

  ReadRegStr $R0 HKCU "${SETTINGS_KEY}" "ProductFolder"
  !insertmacro TAKE_IF_LIBRARY_IN $R0
  ReadRegStr $R0 HKCU "${APP_PATHS}" ""
  Call FolderOfProgram
  !insertmacro TAKE_IF_LIBRARY_IN $R0
  ReadRegStr $R0 HKLM "${APP_PATHS}" ""
  Call FolderOfProgram
  !insertmacro TAKE_IF_LIBRARY_IN $R0
FunctionEnd

; Turns a registered program in R0, with or without quotes, into its folder.
Function FolderOfProgram
  StrCpy $R1 $R0 1
  ${If} $R1 == '"'
    StrCpy $R0 $R0 -1 1
  ${EndIf}
  ${GetParent} $R0 $R0
FunctionEnd

; Pushes the folder that the switch names, or nothing as an empty text. It may be quoted in both
; ways that are usual: /PRODUCT="C:\A B" and "/PRODUCT=C:\A B".
Function ReadProductSwitch
  ${GetParameters} $R0
  StrLen $R1 ${PRODUCT_SWITCH}
  StrCpy $R2 -1 ; where in the text
  ${Do}
    IntOp $R2 $R2 + 1
    StrCpy $R3 $R0 $R1 $R2
    ${If} $R3 == ""
      Push ""
      Return
    ${EndIf}
  ${LoopUntil} $R3 == ${PRODUCT_SWITCH}

  StrCpy $R4 ""
  ${If} $R2 > 0
    IntOp $R3 $R2 - 1
    StrCpy $R4 $R0 1 $R3
  ${EndIf}
  IntOp $R2 $R2 + $R1
  StrCpy $R0 $R0 "" $R2
  StrCpy $R3 $R0 1
  ${If} $R3 == '"'
    StrCpy $R0 $R0 "" 1
    StrCpy $R4 '"'
  ${EndIf}
  ${If} $R4 != '"'
    StrCpy $R4 " /" ; the next switch
  ${EndIf}
  Push $R0
  Push $R4
  Call TextBefore
FunctionEnd

; Takes a text and a mark from the stack and pushes the text in front of the first such mark.
Function TextBefore
  Pop $R1
  Pop $R0
  StrLen $R2 $R1
  StrCpy $R3 0
  ${Do}
    StrCpy $R4 $R0 $R2 $R3
    ${If} $R4 == ""
    ${OrIf} $R4 == $R1
      ${ExitDo}
    ${EndIf}
    IntOp $R3 $R3 + 1
  ${Loop}
  StrCpy $R0 $R0 $R3
  Push $R0
FunctionEnd

!macro PRODUCT_FOLDER_PAGE
  !define MUI_PAGE_HEADER_TEXT "Folder of the CAD Product"
  !define MUI_PAGE_HEADER_SUBTEXT "Carrovan works with a library of the product."
  !define MUI_DIRECTORYPAGE_TEXT_TOP "Choose the folder of the CAD product's programs: the one \
    that holds ${PRODUCT_PROGRAM} and tarvik.dll."
  !define MUI_DIRECTORYPAGE_TEXT_DESTINATION "Program folder of the CAD product"
  !define MUI_DIRECTORYPAGE_VARIABLE $ProductFolder
  !define MUI_DIRECTORYPAGE_VERIFYONLEAVE
  !define MUI_PAGE_CUSTOMFUNCTION_SHOW HideDiskSpace
  !define MUI_PAGE_CUSTOMFUNCTION_LEAVE CheckProductFolder
  !insertmacro MUI_PAGE_DIRECTORY
!macroend

; Nothing is installed into this folder.
Function HideDiskSpace
  FindWindow $R0 "#32770" "" $HWNDPARENT
  GetDlgItem $R1 $R0 1023
  ShowWindow $R1 ${SW_HIDE}
  GetDlgItem $R1 $R0 1024
  ShowWindow $R1 ${SW_HIDE}
FunctionEnd

; The product may be installed later, so the user may insist.
Function CheckProductFolder
  ${If} $ProductFolder == ""
  ${OrIfNot} ${FileExists} "$ProductFolder\tarvik.dll"
    MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "There is no tarvik.dll in this folder. \
      Carrovan cannot start without it. Install Carrovan all the same?" IDYES +2
    Abort
  ${EndIf}
FunctionEnd
