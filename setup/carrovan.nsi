; The setup of Carrovan: for one user, without administrator's rights. tools/make-dist makes it and
; gives VERSION, PROGRAMS (the folder with what is installed) and SETUP_FILE.
Target amd64-unicode
SetCompressor /SOLID lzma
RequestExecutionLevel user
ManifestDPIAware true
ManifestSupportedOS all
AllowSkipFiles off

!include MUI2.nsh
!include FileFunc.nsh
!include Integration.nsh
!include LogicLib.nsh
!include Sections.nsh

!define SETTINGS_KEY "SOFTWARE\Carrovan"
!define UNINSTALL_KEY "SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\Carrovan"
!define RESTORE_POINTS "$LOCALAPPDATA\Carrovan\Restore"

; Beside NSIS's own: 0 done, 1 cancelled by the user, 2 failed.
!define EXIT_FAILED 2
!define EXIT_RUNNING 3
!define EXIT_NO_LIBRARY 4

Var ProductFolder

!include file_types.nsh
!include installed_files.nsh
!include running_program.nsh
!include product_folder.nsh

Name "Carrovan"
OutFile "${SETUP_FILE}"
BrandingText "Carrovan ${VERSION}"
InstallDir "$LOCALAPPDATA\Programs\Carrovan"
InstallDirRegKey HKCU "${SETTINGS_KEY}" "InstallFolder"
ShowInstDetails nevershow
ShowUninstDetails nevershow

VIProductVersion "${VERSION}.0"
VIFileVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Carrovan"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Carrovan setup"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" ""

!define MUI_ICON "${__FILEDIR__}/../resources/carrovan.ico"
!define MUI_UNICON "${__FILEDIR__}/../resources/carrovan.ico"
!define MUI_ABORTWARNING
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro PRODUCT_FOLDER_PAGE
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Function .onInit
  Call FindProductFolder
FunctionEnd

Section "Carrovan" SectionPrograms
  ReadRegStr $0 HKCU "${SETTINGS_KEY}" "InstallFolder"
  Push $INSTDIR
  Call RefuseWhileRunning
  Push $0
  Call RefuseWhileRunning

  ClearErrors
  !insertmacro REMOVE_PROGRAMS "$INSTDIR"
  ClearErrors
  !insertmacro FOR_EACH_FILE INSTALL_FILE
  SetOutPath $INSTDIR
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateShortCut "$SMPROGRAMS\Carrovan.lnk" "$INSTDIR\carrovan.exe"
  ${If} ${Errors}
    SetErrorLevel ${EXIT_FAILED}
    Abort "Carrovan could not be installed: a file in $INSTDIR cannot be written."
  ${EndIf}

  ; The former version may have been installed elsewhere.
  ${If} $0 != ""
  ${AndIf} $0 != $INSTDIR
    !insertmacro REMOVE_PROGRAMS "$0"
    RMDir $0
  ${EndIf}
  Call WriteRegistry
  !insertmacro REGISTER_FILE_TYPES
SectionEnd

Function WriteRegistry
  WriteRegStr HKCU "${SETTINGS_KEY}" "InstallFolder" $INSTDIR
  ${If} $ProductFolder != ""
    WriteRegStr HKCU "${SETTINGS_KEY}" "ProductFolder" $ProductFolder
  ${EndIf}

  SectionGetSize ${SectionPrograms} $0
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "Carrovan"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\carrovan.exe,0"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "Carrovan"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" $INSTDIR
  WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" $0
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
FunctionEnd

Section "un.Carrovan"
  Push $INSTDIR
  Call un.RefuseWhileRunning

  !insertmacro REMOVE_PROGRAMS "$INSTDIR"
  SetOutPath $TEMP ; a folder that a program works in cannot be removed
  RMDir $INSTDIR
  RMDir "$LOCALAPPDATA\Programs"

  ; Another copy of the uninstaller must not take the entries of the one that is installed.
  ReadRegStr $0 HKCU "${SETTINGS_KEY}" "InstallFolder"
  ${If} $0 == $INSTDIR
    Delete "$SMPROGRAMS\Carrovan.lnk"
    !insertmacro UNREGISTER_FILE_TYPES
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
    DeleteRegValue HKCU "${SETTINGS_KEY}" "InstallFolder"
    DeleteRegValue HKCU "${SETTINGS_KEY}" "ProductFolder"
    DeleteRegKey /ifempty HKCU "${SETTINGS_KEY}"
    Call un.RemoveRestorePoints
  ${EndIf}
SectionEnd

; They are the user's: they go when the user says so, or with the switch /PURGE.
Function un.RemoveRestorePoints
  ${If} ${FileExists} "${RESTORE_POINTS}\*.*"
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/PURGE" $1
    ${If} ${Errors}
      MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "Remove the restore points too? They hold \
        your settings as they were before imports and resets, and cannot be brought back.$\n$\n\
        ${RESTORE_POINTS}" /SD IDNO IDNO done
    ${EndIf}
    RMDir /r "${RESTORE_POINTS}"
  ${EndIf}
done:
  RMDir "${RESTORE_POINTS}"
  ; What a killed run leaves.
  Delete "$LOCALAPPDATA\Carrovan\run.lock"
  Delete "$LOCALAPPDATA\Carrovan\run.owner"
  RMDir "$LOCALAPPDATA\Carrovan"
FunctionEnd
