; The installer, made by scripts/package, which defines
;   VERSION, VERSION_4  the program's version (2.0.113) and the same with four numbers
;   PUBLISHER           who makes it
;   SIZE_KB             what the files take on disk
;   OUTPUT              the installer to write
;   STAGED              the folder of the staged files, and
;   FILES               a file of macros that put and take away each of them.
;
; No plug-in: some of them do not load on Windows 98.
;
; Switches: /S installs without a question, /D=FOLDER (last, without quotes) into that folder, /STARTUP also starts the
; program with Windows. Exit codes: 0 installed, 1 cancelled, 2 failed, 3 a running copy did not end.

Unicode false
SetCompressor /SOLID lzma

!include LogicLib.nsh
!include FileFunc.nsh
!include "${FILES}"

!define NAME Kestrelguard
; The class of the main window, by which a running copy is found.
!define WINDOW_CLASS Kestrelguard
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"

Name "${NAME}"
Caption "${NAME} ${VERSION}"
BrandingText " "
OutFile "${OUTPUT}"
InstallDir ""
; As the user who starts it: the folder is his own.
RequestExecutionLevel user
ManifestDPIAware true
ManifestSupportedOS all
XPStyle on
Icon "${STAGED}\..\icon.ico"
UninstallIcon "${STAGED}\..\icon.ico"
ShowInstDetails nevershow
ShowUninstDetails nevershow
AutoCloseWindow true

VIProductVersion ${VERSION_4}
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey FileDescription "${NAME}: installer"
VIAddVersionKey CompanyName "${PUBLISHER}"
VIAddVersionKey LegalCopyright "${PUBLISHER}; MIT licence"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey ProductVersion "${VERSION}"

Page components
Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

ComponentText "This installs ${NAME} ${VERSION}. Your settings and saved cookies are kept."
DirText "Choose a folder that you may write to: ${NAME} keeps its settings beside the program." "" "" ""
UninstallText "This removes ${NAME} from this folder:"

Var WasRunning

; Whether the program, its shortcuts and its entry are for all users (before Windows Vista) or for this one.
!macro ChooseUsers
  SetShellVarContext current
  GetWinVer $0 Major
  ${If} $0 < 6
    SetShellVarContext all
    ; A user who may not write for all of them installs for himself.
    ClearErrors
    WriteRegStr HKLM "${UNINSTALL_KEY}.try" "" ""
    ${If} ${Errors}
      SetShellVarContext current
    ${Else}
      DeleteRegKey HKLM "${UNINSTALL_KEY}.try"
    ${EndIf}
  ${EndIf}
!macroend

; Closes a running copy as its own title bar would, so that it stores its settings; then waits until it is gone and its
; file can be replaced.
!macro DefineCloseRunning un
Function ${un}CloseRunning
  again:
  FindWindow $0 "${WINDOW_CLASS}"
  ${If} $0 <> 0
    StrCpy $WasRunning 1
    SendMessage $0 16 0 0 /TIMEOUT=5000 ; WM_CLOSE
  ${EndIf}
  StrCpy $1 0
  ${Do}
    FindWindow $0 "${WINDOW_CLASS}"
    ${If} $0 = 0
      ${IfNot} ${FileExists} "$INSTDIR\kestrelguard.exe"
        Return
      ${EndIf}
      ClearErrors
      FileOpen $2 "$INSTDIR\kestrelguard.exe" a
      ${IfNot} ${Errors}
        FileClose $2
        Return
      ${EndIf}
    ${EndIf}
    Sleep 100
    IntOp $1 $1 + 1
  ${LoopUntil} $1 >= 300
  MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "${NAME} is still running. Close it, then try again." /SD IDCANCEL IDRETRY again
  SetErrorLevel 3
  Abort "${NAME} is still running."
FunctionEnd
!macroend
!insertmacro DefineCloseRunning ""
!insertmacro DefineCloseRunning "un."

Section "${NAME}" SectionProgram
  SectionIn RO
  Call CloseRunning

  ; What an earlier version has put into this folder goes first; its uninstaller knows, and keeps the settings.
  ReadRegStr $0 SHCTX "${UNINSTALL_KEY}" InstallLocation
  ${If} $0 == $INSTDIR
  ${AndIf} ${FileExists} "$INSTDIR\uninstall.exe"
    ExecWait '"$INSTDIR\uninstall.exe" /S _?=$INSTDIR'
  ${EndIf}

  ClearErrors
  !insertmacro PutFiles
  WriteUninstaller "$INSTDIR\uninstall.exe"
  ${If} ${Errors}
    SetErrorLevel 2
    Abort "The files could not be written."
  ${EndIf}

  SetOutPath "$INSTDIR"
  CreateDirectory "$SMPROGRAMS\${NAME}"
  CreateShortCut "$SMPROGRAMS\${NAME}\${NAME}.lnk" "$INSTDIR\kestrelguard.exe"
  CreateShortCut "$SMPROGRAMS\${NAME}\${NAME} manual.lnk" "$INSTDIR\manual\index.html"
  Delete "$SMSTARTUP\${NAME}.lnk"

  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayName "${NAME}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" Publisher "${PUBLISHER}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\kestrelguard.exe,0"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\uninstall.exe"'
  WriteRegStr SHCTX "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" EstimatedSize ${SIZE_KB}
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoModify 1
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoRepair 1
SectionEnd

Section /o "Start with Windows" SectionStartup
  SetOutPath "$INSTDIR"
  CreateShortCut "$SMSTARTUP\${NAME}.lnk" "$INSTDIR\kestrelguard.exe"
SectionEnd

Function .onInit
  StrCpy $WasRunning 0
  !insertmacro ChooseUsers
  ${If} $INSTDIR == ""
    ReadRegStr $INSTDIR SHCTX "${UNINSTALL_KEY}" InstallLocation
  ${EndIf}
  ${If} $INSTDIR == ""
    StrCpy $INSTDIR "$PROGRAMFILES\${NAME}"
    GetWinVer $0 Major
    ${If} $0 >= 6
    ${AndIf} $LOCALAPPDATA != ""
      StrCpy $INSTDIR "$LOCALAPPDATA\Programs\${NAME}"
    ${EndIf}
  ${EndIf}
  ; The choice of the last time, or the switch.
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/STARTUP" $1
  ${IfNot} ${Errors}
  ${OrIf} ${FileExists} "$SMSTARTUP\${NAME}.lnk"
    SectionSetFlags ${SectionStartup} 1
  ${EndIf}
FunctionEnd

Function .onInstSuccess
  SetOutPath "$INSTDIR"
  ${If} ${Silent}
    ${If} $WasRunning = 1
      Exec '"$INSTDIR\kestrelguard.exe"'
    ${EndIf}
  ${Else}
    MessageBox MB_YESNO|MB_ICONQUESTION "${NAME} is installed. Start it now?" IDNO done
    Exec '"$INSTDIR\kestrelguard.exe"'
    done:
  ${EndIf}
FunctionEnd

Function un.onInit
  StrCpy $WasRunning 0
  !insertmacro ChooseUsers
FunctionEnd

Section Uninstall
  Call un.CloseRunning
  !insertmacro TakeFilesAway
  Delete "$INSTDIR\uninstall.exe"

  ${If} ${FileExists} "$INSTDIR\Kestrel?.CFG"
    MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 \
      "Remove your settings and your list of saved cookies (KestrelS.CFG and KestrelC.CFG), too?" /SD IDNO IDNO keep
    Delete "$INSTDIR\KestrelS.CFG"
    Delete "$INSTDIR\KestrelC.CFG"
    keep:
  ${EndIf}
  RMDir "$INSTDIR"

  ; Another folder may hold another copy, which the entry and the shortcuts belong to.
  ReadRegStr $0 SHCTX "${UNINSTALL_KEY}" InstallLocation
  ${If} $0 == $INSTDIR
    Delete "$SMPROGRAMS\${NAME}\${NAME}.lnk"
    Delete "$SMPROGRAMS\${NAME}\${NAME} manual.lnk"
    RMDir "$SMPROGRAMS\${NAME}"
    Delete "$SMSTARTUP\${NAME}.lnk"
    DeleteRegKey SHCTX "${UNINSTALL_KEY}"
  ${EndIf}
SectionEnd
