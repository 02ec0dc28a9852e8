; Installer for all users of a machine. packaging/windows/build defines:
;   VERSION       such as 1.2.6
;   SIZE          installed size in KiB
;   ICON          the program's icon
;   FILE_LISTS    folder with install-files.nsh and remove-files.nsh, made from the files to be shipped
;   OUTPUT        the installer
;
; Silent use: dravenna-setup.exe /S [/PATH] /D=C:\Folder     (with the switch dravenna-lxf is put on the PATH)
;             uninstall.exe /S [/REMOVESETTINGS]      (without the switch the settings stay)

Target amd64-unicode
SetCompressor /SOLID lzma
ManifestDPIAware true
RequestExecutionLevel admin

Name "Dravenna"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\Dravenna"
BrandingText "Dravenna ${VERSION}"

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Dravenna"
!define VERB_KEY "txtfile\shell\Dravenna"
InstallDirRegKey HKLM "${UNINSTALL_KEY}" "InstallLocation"

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Dravenna"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Dravenna Setup"
VIAddVersionKey "CompanyName" "Halvex"
VIAddVersionKey "LegalCopyright" "Halvex"

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include Sections.nsh

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_FUNCTION RunAsUser
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; The shell starts the program with the rights of the user, not with those of the installer.
Function RunAsUser
  Exec '"$WINDIR\explorer.exe" "$INSTDIR\dravenna.exe"'
FunctionEnd

; The store of settings is the machine's, and the program runs without administrator rights: so its own keys, and no
; others, get an access list with full access for system and administrators, read and write for users, and subkeys
; inherit it. A failure is told in the details; the program works without, but forgets its settings.
!define HKLM_HANDLE -2147483646   ; HKEY_LOCAL_MACHINE, sign extended
!define KEY_ACCESS 0x60106        ; WRITE_DAC | READ_CONTROL | KEY_WOW64_64KEY | KEY_CREATE_SUB_KEY | KEY_SET_VALUE
!define SDDL "D:P(A;CI;KA;;;SY)(A;CI;KA;;;BA)(A;CI;KRKW;;;BU)"

Function OpenKeyToUsers
  Exch $0   ; the key's path
  Push $1   ; security descriptor
  Push $2   ; key
  Push $3   ; result
  System::Call 'advapi32::ConvertStringSecurityDescriptorToSecurityDescriptorW(w "${SDDL}", i 1, *p .r1, p 0) i .r3'
  ${If} $3 = 0
    DetailPrint "No access list for HKLM\$0"
  ${Else}
    System::Call 'advapi32::RegCreateKeyExW(p ${HKLM_HANDLE}, w r0, i 0, p 0, i 0, i ${KEY_ACCESS}, p 0, *p .r2, p 0) i .r3'
    ${If} $3 = 0
      System::Call 'advapi32::RegSetKeySecurity(p r2, i 4, p r1) i .r3'  ; 4: DACL_SECURITY_INFORMATION
      System::Call 'advapi32::RegCloseKey(p r2)'
    ${EndIf}
    ${If} $3 = 0
      DetailPrint "Settings: HKLM\$0"
    ${Else}
      DetailPrint "HKLM\$0 can't be opened to users: error $3"
    ${EndIf}
    System::Call 'kernel32::LocalFree(p r1)'
  ${EndIf}
  Pop $3
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

!macro OpenKeyToUsers KEY
  Push "${KEY}"
  Call OpenKeyToUsers
!macroend

; Files of a running program can't be replaced or removed.
!macro WaitUntilClosed
  ${Do}
    ${IfNot} ${FileExists} "$INSTDIR\dravenna.exe"
      ${Break}
    ${EndIf}
    ClearErrors
    FileOpen $0 "$INSTDIR\dravenna.exe" a
    ${IfNot} ${Errors}
      FileClose $0
      ${Break}
    ${EndIf}
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION \
      "Dravenna is running, or you may not write to $INSTDIR. Close the program and try again." \
      /SD IDCANCEL IDRETRY +2
    Abort
  ${Loop}
!macroend

; The machine's PATH may be longer than a string of this language can be, and is never made one. Sets whether TOOL_FOLDER
; is on it, to $0 (1 or 0); what else stands there stays as it is, and so does a PATH that can't be read. Uses $1 to $9.
!define TOOL_FOLDER "$INSTDIR\tool"
!define ENVIRONMENT_KEY "SYSTEM\CurrentControlSet\Control\Session Manager\Environment"
!macro SetPathFunction UN
Function ${UN}SetPath
  ; KEY_WOW64_64KEY | KEY_SET_VALUE | KEY_QUERY_VALUE
  System::Call 'advapi32::RegOpenKeyExW(p ${HKLM_HANDLE}, w "${ENVIRONMENT_KEY}", i 0, i 0x103, *p .r1) i .r9'
  ${If} $9 <> 0
    DetailPrint "PATH can't be opened: error $9"
    Return
  ${EndIf}
  System::Call 'advapi32::RegQueryValueExW(p r1, w "Path", p 0, *i .r2, p 0, *i .r3) i .r9' ; type, bytes
  ${If} $9 = 2 ; ERROR_FILE_NOT_FOUND
    StrCpy $2 2 ; REG_EXPAND_SZ
    StrCpy $3 0
    StrCpy $9 0
  ${EndIf}
  ${If} $9 <> 0
  ${OrIf} $2 > 2 ; no string
    DetailPrint "PATH can't be read: error $9, type $2"
  ${Else}
    StrLen $4 "${TOOL_FOLDER}"
    IntOp $5 $4 * 2
    IntOp $5 $5 + $3
    IntOp $5 $5 + 16
    System::Alloc $5 ; of zeroes, for ";PATH;"
    Pop $6
    IntPtrOp $7 $6 + 2
    System::Call 'kernel32::lstrcpyW(p r6, w ";")'
    ${If} $3 > 2
      System::Call 'advapi32::RegQueryValueExW(p r1, w "Path", p 0, p 0, p r7, *i r3)'
      System::Call 'kernel32::lstrcatW(p r6, w ";")'
    ${EndIf}
    System::Call 'shlwapi::StrStrIW(p r6, w ";${TOOL_FOLDER};") p .r8'
    StrCpy $9 1 ; to be written
    ${If} $0 = 1
    ${AndIf} $8 P= 0
      System::Call 'kernel32::lstrcatW(p r6, w "${TOOL_FOLDER}")'
    ${ElseIf} $0 = 0
    ${AndIf} $8 P<> 0
      IntOp $5 $4 + 1
      IntOp $5 $5 * 2
      IntPtrOp $5 $8 + $5
      System::Call 'kernel32::lstrlenW(p r5) i .r3'
      IntOp $3 $3 * 2
      IntOp $3 $3 + 2
      System::Call 'kernel32::RtlMoveMemory(p r8, p r5, p r3)'
      System::Call 'kernel32::lstrlenW(p r6) i .r3'
      ${If} $3 > 1 ; without the ";" at the end
        IntOp $3 $3 - 1
        IntOp $3 $3 * 2
        IntPtrOp $5 $6 + $3
        System::Call 'kernel32::lstrcpyW(p r5, w "")'
      ${EndIf}
    ${Else}
      StrCpy $9 0
    ${EndIf}
    ${If} $9 = 1
      System::Call 'kernel32::lstrlenW(p r7) i .r3'
      IntOp $3 $3 * 2
      IntOp $3 $3 + 2
      System::Call 'advapi32::RegSetValueExW(p r1, w "Path", i 0, i r2, p r7, i r3) i .r9'
      ${If} $9 <> 0
        DetailPrint "PATH can't be changed: error $9"
      ${EndIf}
      SendMessage ${HWND_BROADCAST} ${WM_WININICHANGE} 0 "STR:Environment" /TIMEOUT=5000
    ${EndIf}
    System::Free $6
  ${EndIf}
  System::Call 'advapi32::RegCloseKey(p r1)'
FunctionEnd
!macroend
!insertmacro SetPathFunction ""
!insertmacro SetPathFunction "un."

Section "Dravenna"
  SectionIn RO
  SetShellVarContext all
  SetRegView 64
  !insertmacro WaitUntilClosed
  !include "${FILE_LISTS}/install-files.nsh"
  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateShortCut "$SMPROGRAMS\Dravenna.lnk" "$INSTDIR\dravenna.exe"

  !insertmacro OpenKeyToUsers "Software\Halvex\Dravenna"
  !insertmacro OpenKeyToUsers "Software\Halvex\Dravenna\Lang"
  !insertmacro OpenKeyToUsers "Software\Halvex\Dravanne\Lang"

  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "Dravenna"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\dravenna.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "Halvex"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE}
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section /o "dravenna-lxf on the PATH" OnPath
SectionEnd

Section ; last: the one above is only a mark
  SetRegView 64
  StrCpy $0 0
  ${If} ${SectionIsSelected} ${OnPath}
    StrCpy $0 1
  ${EndIf}
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "OnPath" $0
  Call SetPath
SectionEnd

; What was chosen last time is offered again.
Function .onInit
  SetRegView 64
  ReadRegDWORD $0 HKLM "${UNINSTALL_KEY}" "OnPath"
  ${GetParameters} $1
  ClearErrors
  ${GetOptions} $1 "/PATH" $2
  ${IfNot} ${Errors}
    StrCpy $0 1
  ${EndIf}
  ${If} $0 = 1
    !insertmacro SelectSection ${OnPath}
  ${EndIf}
FunctionEnd

; The program itself writes the verb. It goes only when it names a program of this folder: another copy keeps its own.
Function un.RemoveVerb
  ReadRegStr $0 HKCR "${VERB_KEY}\command" ""
  StrCpy $1 '"$INSTDIR\'
  StrLen $2 $1
  StrCpy $0 $0 $2
  ${If} $0 == $1
    DeleteRegKey HKCR "${VERB_KEY}"
  ${EndIf}
FunctionEnd

Section "Uninstall"
  SetShellVarContext all
  SetRegView 64
  !insertmacro WaitUntilClosed
  Call un.RemoveVerb
  StrCpy $0 0
  Call un.SetPath
  ; Only what was installed goes; files that the user put into the folder stay, and then so does the folder.
  !include "${FILE_LISTS}/remove-files.nsh"
  Delete "$INSTDIR\uninstall.exe"
  SetOutPath "$TEMP"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\Dravenna.lnk"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"

  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/REMOVESETTINGS" $1
  ${If} ${Errors}
    MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 \
      "Remove Dravenna's settings and translated words too? They are the same for all users of this machine." \
      /SD IDNO IDNO keep
  ${EndIf}
  DeleteRegKey HKLM "Software\Halvex\Dravenna"
  DeleteRegKey HKLM "Software\Halvex\Dravanne"
  DeleteRegKey /ifempty HKLM "Software\Halvex"
keep:
SectionEnd
