; The per-user installer. The caller defines VERSION, PROGRAM and LICENSE (files), ICON, OUTPUT, and
; if there are such: SIGN, a program that signs the uninstaller, and HOMEPAGE, an address.
;
; Exit codes, for silent use; documented in docs/deployment.md.
!define EXIT_STILL_RUNNING 3
!define EXIT_NOT_WRITTEN 4
!define EXIT_STARTUP_FAILED 5
!define EXIT_DATA_KEPT 6
!define EXIT_SERVICE_ACCOUNT 7
!define EXIT_OLD_WINDOWS 8

; A 64-bit stub and plug-ins, like the program.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
; File times would make builds of the same sources differ.
SetDateSave off
ManifestSupportedOS all
ManifestDPIAware true
RequestExecutionLevel user

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include Sections.nsh
!include WinMessages.nsh
!include WinVer.nsh
!include WordFunc.nsh

!define CONTROL_CLASS MorvaneHiddenWindow
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Morvane"
!define PUBLISHER "the Morvane authors"
!define START_MENU_ENTRY "$SMPROGRAMS\Morvane.lnk"
!define STAGED .new ; suffix of new files until all of them are in place
!define MARKER folder.new ; is in both folders if they are the same
!define KEPT .old ; suffix of copies of the old files until all of them are replaced
!define REST_OPTION /REST ; to delete only the uninstaller's own file and folder
!define FILE_PATIENCE 25 ; attempts, 200 ms apart, at a file in use
!define CLOSE_PATIENCE 10000 ; milliseconds, for one copy

Name "Morvane"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\Morvane"
; An upgrade goes where the old version is.
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"
BrandingText "Morvane ${VERSION}"

VIProductVersion "${VERSION}"
VIAddVersionKey /LANG=0 "CompanyName" "${PUBLISHER}"
VIAddVersionKey /LANG=0 "FileDescription" "Morvane Setup"
VIAddVersionKey /LANG=0 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=0 "LegalCopyright" "Copyright © 2026 ${PUBLISHER}"
VIAddVersionKey /LANG=0 "ProductName" "Morvane"
VIAddVersionKey /LANG=0 "ProductVersion" "${VERSION}"

!ifdef SIGN
!uninstfinalize '"${SIGN}" "%1"' = 0
!endif

Var isReplacing ; 1 from the first replaced file until the last step has succeeded
Var hasClosed ; 1 if a running copy was closed and has ended

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_WELCOMEFINISHPAGE_BITMAP side.bmp
!define MUI_COMPONENTSPAGE_NODESC
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\Morvane.exe"
; The page's second check box, meant for showing a readme, serves as "Start with Windows".
!define MUI_FINISHPAGE_SHOWREADME ""
!define MUI_FINISHPAGE_SHOWREADME_TEXT "$(START_WITH_WINDOWS)"
!define MUI_FINISHPAGE_SHOWREADME_FUNCTION Nothing
!define MUI_PAGE_CUSTOMFUNCTION_SHOW ShowStartupState
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE SetStartup
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES

; The first one serves all other languages.
!insertmacro MUI_LANGUAGE English
!insertmacro MUI_LANGUAGE Japanese
!insertmacro MUI_LANGUAGE SimpChinese
!insertmacro MUI_LANGUAGE TradChinese
!insertmacro MUI_LANGUAGE Korean
!insertmacro MUI_LANGUAGE Spanish
!insertmacro MUI_LANGUAGE French
!insertmacro MUI_LANGUAGE German
!insertmacro MUI_LANGUAGE PortugueseBR
!insertmacro MUI_LANGUAGE Russian
!include texts.nsh

; The stub goes by the primary language alone; Chinese in Hong Kong and Macau is traditional.
!macro CHOOSE_LANGUAGE
    System::Call "kernel32::GetUserDefaultUILanguage() i .r0"
    ${If} $0 = 0x0C04
    ${OrIf} $0 = 0x1404
        StrCpy $LANGUAGE ${LANG_TRADCHINESE}
    ${EndIf}
!macroend

; Closes the running copy as its own menu does, so that it unpins its windows, and waits for its
; process to end. Sets the error flag if it does not.
!macro DEFINE_CLOSE_RUNNING_COPY prefix
Function ${prefix}CloseRunningCopy
    ; One instance runs at a time, but another may start while this one ends.
    ${For} $R0 1 3
        ; Its window is message-only: found only under HWND_MESSAGE, -3.
        System::Call "user32::FindWindowExW(p -3, p 0, w '${CONTROL_CLASS}', p 0) p .r0"
        ${If} $0 P= 0
            ClearErrors
            Return
        ${EndIf}
        System::Call "user32::GetWindowThreadProcessId(p r0, *i .r1)"
        System::Call "kernel32::OpenProcess(i 0x00100000, i 0, i r1) p .r2" ; SYNCHRONIZE
        System::Call "user32::PostMessageW(p r0, i ${WM_CLOSE}, p 0, p 0) i .r3"
        ${If} $3 = 0
            ; An elevated process takes no messages from this one.
            System::Call "kernel32::CloseHandle(p r2)"
            ${Break}
        ${EndIf}
        System::Call "kernel32::WaitForSingleObject(p r2, i ${CLOSE_PATIENCE}) i .r3"
        System::Call "kernel32::CloseHandle(p r2)"
        ${If} $3 <> 0
            ${Break}
        ${EndIf}
        StrCpy $hasClosed 1
    ${Next}
    SetErrors
FunctionEnd

; The same, but asks the user to retry on failure. Sets the error flag when the user cancels; a
; silent run cancels at once.
Function ${prefix}RequireNoRunningCopy
    again:
    Call ${prefix}CloseRunningCopy
    IfErrors 0 closed
    DetailPrint "$(STILL_RUNNING)"
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$(STILL_RUNNING)" /SD IDCANCEL IDRETRY again
    SetErrors
    closed:
FunctionEnd
!macroend
!insertmacro DEFINE_CLOSE_RUNNING_COPY ""
!insertmacro DEFINE_CLOSE_RUNNING_COPY "un."

; Moves the file $R3 over $R4. It may be in use for a moment: by a virus scanner, a copy about to
; end, or one just started that had no window yet. Sets the error flag on failure.
Function MoveOver
    ${For} $R2 1 ${FILE_PATIENCE}
        ; Paths in variables: an apostrophe in a path would end a string in the call's own text.
        System::Call "kernel32::MoveFileExW(w R3, w R4, i 1) i .r0" ; MOVEFILE_REPLACE_EXISTING
        ${If} $0 <> 0
            ClearErrors
            Return
        ${EndIf}
        Sleep 200
        Call CloseRunningCopy
    ${Next}
    SetErrors
FunctionEnd

; Keeps a copy of a file about to be replaced; no copy means there was none.
!macro KEEP name
    Delete "$INSTDIR\${name}${KEPT}"
    ${If} ${FileExists} "$INSTDIR\${name}"
        CopyFiles /SILENT "$INSTDIR\${name}" "$INSTDIR\${name}${KEPT}"
    ${EndIf}
!macroend

!macro REPLACE name
    StrCpy $R3 "$INSTDIR\${name}${STAGED}"
    StrCpy $R4 "$INSTDIR\${name}"
    Call MoveOver
!macroend

!macro RESTORE name
    StrCpy $R3 "$INSTDIR\${name}${KEPT}"
    StrCpy $R4 "$INSTDIR\${name}"
    ${If} ${FileExists} $R3
        Call MoveOver
    ${Else}
        Delete $R4
    ${EndIf}
!macroend

!macro DELETE_ASIDE name
    Delete "$INSTDIR\${name}${STAGED}"
    Delete "$INSTDIR\${name}${KEPT}"
!macroend

; Restores what was there before.
Function .onInstFailed
    ${If} $isReplacing = 1
        !insertmacro RESTORE Morvane.exe
        !insertmacro RESTORE LICENSE.txt
        !insertmacro RESTORE Uninstall.exe
    ${EndIf}
    !insertmacro DELETE_ASIDE Morvane.exe
    !insertmacro DELETE_ASIDE LICENSE.txt
    !insertmacro DELETE_ASIDE Uninstall.exe
    SetOutPath "$PROFILE"
    ${If} $isReplacing = 1
    ${AndIfNot} ${FileExists} "$INSTDIR\Morvane.exe"
        Delete "${START_MENU_ENTRY}"
        DeleteRegKey HKCU "${UNINSTALL_KEY}"
    ${EndIf}
    ; Only removes it empty, that is, if nothing was installed before.
    RMDir "$INSTDIR"
    ${If} $hasClosed = 1
        Exec '"$INSTDIR\Morvane.exe"'
    ${EndIf}
FunctionEnd

; Removes an old version in another folder, $R9, after pointing its Startup shortcut to this one. A
; folder has more than one name: a short one, or one by way of a link.
Function LeaveOldFolder
    FileOpen $0 "$INSTDIR\${MARKER}" w
    FileClose $0
    StrCpy $1 0
    ${If} ${FileExists} "$R9\${MARKER}"
        StrCpy $1 1
    ${EndIf}
    Delete "$INSTDIR\${MARKER}"
    ${If} $1 = 1
        Return
    ${EndIf}
    ${If} ${FileExists} "$SMSTARTUP\Morvane.lnk"
        Call EnableStartup
    ${EndIf}
    Delete "$R9\Morvane.exe"
    Delete "$R9\LICENSE.txt"
    Delete "$R9\Uninstall.exe"
    RMDir "$R9"
FunctionEnd

!macro REFUSE text code
    MessageBox MB_OK|MB_ICONSTOP "${text}" /SD IDOK
    SetErrorLevel ${code}
    Quit
!macroend

Function .onInit
    !insertmacro CHOOSE_LANGUAGE
    ${IfNot} ${AtLeastWin10}
        !insertmacro REFUSE "$(OLD_WINDOWS)" ${EXIT_OLD_WINDOWS}
    ${EndIf}
    ; Only the profiles of the system and service accounts are there: no user would see the program.
    StrLen $0 "$WINDIR\"
    StrCpy $0 $LOCALAPPDATA $0
    ${If} $0 == "$WINDIR\"
        !insertmacro REFUSE "$(SERVICE_ACCOUNT)" ${EXIT_SERVICE_ACCOUNT}
    ${EndIf}
    Call RequireRequestedFolder
FunctionEnd

; If the requested folder is impossible, the stub silently uses the default: refuse instead.
Function RequireRequestedFolder
    System::Call "kernel32::GetCommandLineW() t .r0"
    ClearErrors
    ${WordFind} "$0" " /D=" "E+1}" $1
    ${If} ${Errors}
        Return
    ${EndIf}
    StrCpy $2 $1 1 -1
    ${If} $2 == "\"
        StrCpy $1 $1 -1
    ${EndIf}
    ${If} $1 != $INSTDIR
        StrCpy $INSTDIR $1
        !insertmacro REFUSE "$(NOT_WRITTEN)" ${EXIT_NOT_WRITTEN}
    ${EndIf}
FunctionEnd

Section
    SetShellVarContext current
    StrCpy $hasClosed 0
    StrCpy $isReplacing 0
    SetErrorLevel ${EXIT_NOT_WRITTEN}

    ; Everything that needs disk space comes before anything that cannot be undone.
    ClearErrors
    SetOutPath "$INSTDIR"
    SetOverwrite on
    AllowSkipFiles off
    File "/oname=Morvane.exe${STAGED}" "${PROGRAM}"
    File "/oname=LICENSE.txt${STAGED}" "${LICENSE}"
    WriteUninstaller "$INSTDIR\Uninstall.exe${STAGED}"
    !insertmacro KEEP Morvane.exe
    !insertmacro KEEP LICENSE.txt
    !insertmacro KEEP Uninstall.exe
    ; Otherwise the shortcut and whatever is started here would use the program's folder as working
    ; folder and keep it in use.
    SetOutPath "$PROFILE"
    IfErrors notWritten

    Call RequireNoRunningCopy
    IfErrors 0 closed
    SetErrorLevel ${EXIT_STILL_RUNNING}
    Abort
    closed:

    ; The program first: if a copy in another session uses it, nothing has been replaced yet.
    !insertmacro REPLACE Morvane.exe
    IfErrors notWritten
    StrCpy $isReplacing 1
    !insertmacro REPLACE LICENSE.txt
    IfErrors notWritten
    !insertmacro REPLACE Uninstall.exe
    IfErrors notWritten
    CreateShortcut "${START_MENU_ENTRY}" "$INSTDIR\Morvane.exe"
    ReadRegStr $R9 HKCU "${UNINSTALL_KEY}" "InstallLocation"
    ClearErrors ; it may be missing
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "Morvane"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\Morvane.exe,0"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "${PUBLISHER}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
    ; In place, so that its caller can wait for the end and gets the exit code.
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\Uninstall.exe" /S _?=$INSTDIR'
!ifdef HOMEPAGE
    WriteRegStr HKCU "${UNINSTALL_KEY}" "URLInfoAbout" "${HOMEPAGE}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "HelpLink" "${HOMEPAGE}/issues"
!endif
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
    IfErrors notWritten
    !insertmacro DELETE_ASIDE Morvane.exe
    !insertmacro DELETE_ASIDE LICENSE.txt
    !insertmacro DELETE_ASIDE Uninstall.exe
    StrCpy $isReplacing 0
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" $0
    SetErrorLevel 0
    ${If} $R9 != ""
    ${AndIf} $R9 != $INSTDIR
        Call LeaveOldFolder
    ${EndIf}
    Return

    notWritten:
    DetailPrint "$(NOT_WRITTEN)"
    MessageBox MB_OK|MB_ICONSTOP "$(NOT_WRITTEN)" /SD IDOK
    Abort
SectionEnd

; The choices of the last page, for a silent run.
Section
    ${IfNot} ${Silent}
        Return
    ${EndIf}
    ${GetParameters} $R0
    ${GetOptions} $R0 "/STARTUP=" $R1
    ${If} $R1 == 1
        Call EnableStartup
    ${ElseIf} $R1 == 0
        Call DisableStartup
    ${EndIf}
    ; Restarts what ran before, unless told not to.
    ${GetOptions} $R0 "/START=" $R1
    ${If} $R1 == ""
        StrCpy $R1 $hasClosed
    ${EndIf}
    ${If} $R1 == 1
        Exec '"$INSTDIR\Morvane.exe"'
    ${EndIf}
SectionEnd

Function EnableStartup
    StrCpy $0 1 ; if it cannot be started
    ExecWait '"$INSTDIR\Morvane.exe" --install-startup' $0
    ${If} $0 <> 0
        SetErrorLevel ${EXIT_STARTUP_FAILED}
        MessageBox MB_OK|MB_ICONEXCLAMATION "$(STARTUP_FAILED)" /SD IDOK
    ${EndIf}
FunctionEnd

Function DisableStartup
    ExecWait '"$INSTDIR\Morvane.exe" --remove-startup'
    ${If} ${FileExists} "$SMSTARTUP\Morvane.lnk"
        SetErrorLevel ${EXIT_STARTUP_FAILED}
        MessageBox MB_OK|MB_ICONEXCLAMATION "$(STARTUP_FAILED)" /SD IDOK
    ${EndIf}
FunctionEnd

; The check box shows the current state, so that an upgrade does not change it.
Function ShowStartupState
    ${If} ${FileExists} "$SMSTARTUP\Morvane.lnk"
        ${NSD_Check} $mui.FinishPage.ShowReadme
    ${Else}
        ${NSD_Uncheck} $mui.FinishPage.ShowReadme
    ${EndIf}
FunctionEnd

Function SetStartup
    ${NSD_GetState} $mui.FinishPage.ShowReadme $R0
    ${If} $R0 = ${BST_CHECKED}
        Call EnableStartup
    ${Else}
        Call DisableStartup
    ${EndIf}
FunctionEnd

; The page calls this for a checked box; SetStartup has done the work.
Function Nothing
FunctionEnd

Section "un.Morvane"
    SectionIn RO
    Call un.Remove
SectionEnd

; Only a check box: the program deletes its settings itself, before it is removed.
Section /o "un.$(REMOVE_SETTINGS)" SettingsSection
SectionEnd

Function un.onUninstFailed
    ${If} $hasClosed = 1
        Exec '"$INSTDIR\Morvane.exe"'
    ${EndIf}
FunctionEnd

; Sets the error flag if the program file is in use, by a copy in another session, say.
Function un.RequireFreeProgram
    ${IfNot} ${FileExists} "$INSTDIR\Morvane.exe"
        Return
    ${EndIf}
    ${For} $R2 1 ${FILE_PATIENCE}
        ClearErrors
        FileOpen $0 "$INSTDIR\Morvane.exe" a
        ${IfNot} ${Errors}
            FileClose $0
            Return
        ${EndIf}
        Sleep 200
        Call un.CloseRunningCopy
    ${Next}
    SetErrors
FunctionEnd

; The uninstaller that started this copy of itself may not have ended yet. Run in place it cannot
; delete its own file; see un.onUninstSuccess. Copies have other names.
Function un.DeleteUninstaller
    ${If} $EXEFILE == "Uninstall.exe"
        Return
    ${EndIf}
    ${For} $R2 1 ${FILE_PATIENCE}
        ${If} ${FileExists} "$INSTDIR\Morvane.exe"
            ; Installed anew meanwhile, and so is the uninstaller.
            Return
        ${EndIf}
        Delete "$INSTDIR\Uninstall.exe"
        ${IfNot} ${FileExists} "$INSTDIR\Uninstall.exe"
            ${Break}
        ${EndIf}
        Sleep 200
    ${Next}
    ; Only if the user has put nothing in it.
    RMDir "$INSTDIR"
FunctionEnd

; Run in place, a copy deletes the original once that has ended.
Function un.onUninstSuccess
    ${If} $EXEFILE == "Uninstall.exe"
        StrCpy $0 "$TEMP\Morvane-Uninstall.exe"
        CopyFiles /SILENT "$INSTDIR\Uninstall.exe" $0
        Exec '"$0" /S ${REST_OPTION} _?=$INSTDIR'
    ${EndIf}
FunctionEnd

; Needs the program. If something is left behind, sets $R8 to the exit code and $R9 to the message.
Function un.RemoveTraces
    ${If} ${FileExists} "$INSTDIR\Morvane.exe"
        ExecWait '"$INSTDIR\Morvane.exe" --remove-startup'
    ${EndIf}
    ${If} ${FileExists} "$SMSTARTUP\Morvane.lnk"
        StrCpy $R8 ${EXIT_STARTUP_FAILED}
        StrCpy $R9 "$(STARTUP_FAILED)"
    ${EndIf}
    ${If} ${SectionIsSelected} ${SettingsSection}
    ${AndIf} ${FileExists} "$APPDATA\Morvane"
        StrCpy $0 1 ; if it cannot be started
        ExecWait '"$INSTDIR\Morvane.exe" --remove-data' $0
        ${If} $0 <> 0
            StrCpy $R8 ${EXIT_DATA_KEPT}
            StrCpy $R9 "$(DATA_KEPT)"
        ${EndIf}
    ${EndIf}
FunctionEnd

Function un.Remove
    SetShellVarContext current
    SetOutPath "$PROFILE"
    StrCpy $hasClosed 0
    Call un.RequireNoRunningCopy
    ${If} ${Errors}
        SetErrorLevel ${EXIT_STILL_RUNNING}
        Abort
    ${EndIf}
    Call un.RequireFreeProgram
    ${If} ${Errors}
        SetErrorLevel ${EXIT_NOT_WRITTEN}
        DetailPrint "$(NOT_DELETED)"
        MessageBox MB_OK|MB_ICONSTOP "$(NOT_DELETED)" /SD IDOK
        Abort
    ${EndIf}

    StrCpy $R8 0
    Call un.RemoveTraces
    Delete "$INSTDIR\Morvane.exe"
    Delete "$INSTDIR\LICENSE.txt"
    Delete "${START_MENU_ENTRY}"
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
    Call un.DeleteUninstaller

    ${If} $R8 <> 0
        SetErrorLevel $R8
        DetailPrint "$R9"
        MessageBox MB_OK|MB_ICONEXCLAMATION "$R9" /SD IDOK
    ${EndIf}
FunctionEnd

Function un.onInit
    !insertmacro CHOOSE_LANGUAGE
    ${GetParameters} $R0
    ClearErrors
    ${GetOptions} $R0 "${REST_OPTION}" $R1
    ${IfNot} ${Errors}
        Call un.DeleteUninstaller
        Quit
    ${EndIf}
    ClearErrors
    ${GetOptions} $R0 "/REMOVEDATA" $R1
    ${IfNot} ${Errors}
        ; No other value counts: deletion is final.
        ${If} $R1 == ""
        ${OrIf} $R1 == "=1"
            !insertmacro SelectSection ${SettingsSection}
        ${EndIf}
    ${EndIf}
FunctionEnd
