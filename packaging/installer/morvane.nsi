; The per-user installer. Defined by the caller: VERSION, PROGRAM and LICENSE (files), ICON,
; INSTALLED_KIB, OUTPUT, and SIGN_UNINSTALLER where a command is to sign the uninstaller.
;
; Exit codes, for silent use; docs/deployment.md tells administrators of them.
!define EXIT_STILL_RUNNING 3
!define EXIT_NOT_WRITTEN 4
!define EXIT_STARTUP_FAILED 5
!define EXIT_DATA_KEPT 6

; The stub and the plug-ins are 64-bit ones, like the program.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
; The files' own times would make every build of the same sources different.
SetDateSave off
ManifestSupportedOS all
ManifestDPIAware true
RequestExecutionLevel user

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include Sections.nsh
!include WinMessages.nsh
!include WordFunc.nsh

!define CONTROL_CLASS MorvaneHiddenWindow
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Morvane"
!define PUBLISHER "the Morvane authors"
!define START_MENU_ENTRY "$SMPROGRAMS\Morvane.lnk"
!define STAGED .new ; ends the names of files until all of them are there
!define CLOSE_PATIENCE 10000 ; milliseconds, for one copy

Name "Morvane"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\Morvane"
; An upgrade goes where the older version is.
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"
BrandingText "Morvane ${VERSION}"

VIProductVersion "${VERSION}"
VIAddVersionKey /LANG=0 "CompanyName" "${PUBLISHER}"
VIAddVersionKey /LANG=0 "FileDescription" "Morvane Setup"
VIAddVersionKey /LANG=0 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=0 "LegalCopyright" "Copyright © 2026 ${PUBLISHER}"
VIAddVersionKey /LANG=0 "ProductName" "Morvane"
VIAddVersionKey /LANG=0 "ProductVersion" "${VERSION}"

!ifdef SIGN_UNINSTALLER
!uninstfinalize '${SIGN_UNINSTALLER} "%1"' = 0
!endif

Var wasRunning ; 1 when a copy was closed

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_WELCOMEFINISHPAGE_BITMAP side.bmp
!define MUI_COMPONENTSPAGE_NODESC
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\Morvane.exe"
; The page has one more check box, made for a text to be shown; here it is "Start with Windows".
!define MUI_FINISHPAGE_SHOWREADME ""
!define MUI_FINISHPAGE_SHOWREADME_TEXT "$(START_WITH_WINDOWS)"
!define MUI_FINISHPAGE_SHOWREADME_FUNCTION Nothing
!define MUI_PAGE_CUSTOMFUNCTION_SHOW ShowStartupState
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE SetStartup
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES

; The first is the one for every other language.
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

; Closes the running copy the way its own menu does, so that it lets its windows go, and returns
; once its process has ended. Sets the error flag when it does not end.
!macro DEFINE_CLOSE_RUNNING_COPY prefix
Function ${prefix}CloseRunningCopy
    StrCpy $wasRunning 0
    ; One instance runs at a time, but another may start while this one ends.
    ${For} $R0 1 3
        ; Its window is message-only and found only below the parent of those, -3.
        System::Call "user32::FindWindowExW(p -3, p 0, w '${CONTROL_CLASS}', p 0) p .r0"
        ${If} $0 P= 0
            ClearErrors
            Return
        ${EndIf}
        StrCpy $wasRunning 1
        System::Call "user32::GetWindowThreadProcessId(p r0, *i .r1)"
        System::Call "kernel32::OpenProcess(i 0x00100000, i 0, i r1) p .r2" ; SYNCHRONIZE
        System::Call "user32::PostMessageW(p r0, i ${WM_CLOSE}, p 0, p 0)"
        ${If} $2 P= 0
            ; A process of higher rights, say. Its window is all there is to watch.
            StrCpy $3 258
            ${For} $R1 1 50
                System::Call "user32::IsWindow(p r0) i .r4"
                ${If} $4 = 0
                    StrCpy $3 0
                    ${Break}
                ${EndIf}
                Sleep 200
            ${Next}
        ${Else}
            System::Call "kernel32::WaitForSingleObject(p r2, i ${CLOSE_PATIENCE}) i .r3"
            System::Call "kernel32::CloseHandle(p r2)"
        ${EndIf}
        ${If} $3 <> 0
            ${Break}
        ${EndIf}
    ${Next}
    SetErrors
FunctionEnd

; The same, asking the user to try again as long as it fails. Sets the error flag when that is
; given up; a silent run gives up at once.
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

; Moves a staged file over the one that it is to become. Sets the error flag on failure.
!macro REPLACE name
    System::Call "kernel32::MoveFileExW(w '$INSTDIR\${name}${STAGED}', w '$INSTDIR\${name}', i 1) i .r0"
    ${If} $0 = 0
        SetErrors
    ${EndIf}
!macroend

Function DeleteStagedFiles
    Delete "$INSTDIR\Morvane.exe${STAGED}"
    Delete "$INSTDIR\Uninstall.exe${STAGED}"
    Delete "$INSTDIR\LICENSE.txt${STAGED}"
    ; Only when it is empty, that is, when nothing was installed before.
    SetOutPath "$TEMP"
    RMDir "$INSTDIR"
FunctionEnd

; Every end that is none of success. What was there before is there still.
Function .onInstFailed
    Call DeleteStagedFiles
    ${If} $wasRunning = 1
        Exec '"$INSTDIR\Morvane.exe"'
    ${EndIf}
FunctionEnd

; The stub silently goes to the default folder when the one asked for cannot exist: refuse instead.
Function .onInit
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
        MessageBox MB_OK|MB_ICONSTOP "$(NOT_WRITTEN)" /SD IDOK
        SetErrorLevel ${EXIT_NOT_WRITTEN}
        Quit
    ${EndIf}
FunctionEnd

Section
    SetShellVarContext current
    StrCpy $wasRunning 0
    SetErrorLevel ${EXIT_NOT_WRITTEN}

    ; All that takes room on the disk comes before anything that cannot be taken back.
    ClearErrors
    SetOutPath "$INSTDIR"
    SetOverwrite on
    AllowSkipFiles off
    File "/oname=Morvane.exe${STAGED}" "${PROGRAM}"
    File "/oname=LICENSE.txt${STAGED}" "${LICENSE}"
    WriteUninstaller "$INSTDIR\Uninstall.exe${STAGED}"
    IfErrors notWritten

    Call RequireNoRunningCopy
    IfErrors 0 closed
    SetErrorLevel ${EXIT_STILL_RUNNING}
    Abort
    closed:

    ; The program first: when a copy in another session holds it, nothing has been replaced.
    !insertmacro REPLACE Morvane.exe
    IfErrors notWritten
    !insertmacro REPLACE LICENSE.txt
    !insertmacro REPLACE Uninstall.exe
    CreateShortcut "${START_MENU_ENTRY}" "$INSTDIR\Morvane.exe"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "Morvane"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\Morvane.exe,0"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "${PUBLISHER}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\Uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" ${INSTALLED_KIB}
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
    IfErrors notWritten
    SetErrorLevel 0
    Return

    notWritten:
    DetailPrint "$(NOT_WRITTEN)"
    MessageBox MB_OK|MB_ICONSTOP "$(NOT_WRITTEN)" /SD IDOK
    Abort
SectionEnd

; The choices of the last page, for a run without pages.
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
    ; What ran before runs again, unless it is not wanted.
    ${GetOptions} $R0 "/START=" $R1
    ${If} $R1 == ""
        StrCpy $R1 $wasRunning
    ${EndIf}
    ${If} $R1 == 1
        Exec '"$INSTDIR\Morvane.exe"'
    ${EndIf}
SectionEnd

Function EnableStartup
    ExecWait '"$INSTDIR\Morvane.exe" --install-startup' $0
    ${If} $0 <> 0
        SetErrorLevel ${EXIT_STARTUP_FAILED}
        MessageBox MB_OK|MB_ICONEXCLAMATION "$(STARTUP_FAILED)" /SD IDOK
    ${EndIf}
FunctionEnd

Function DisableStartup
    ExecWait '"$INSTDIR\Morvane.exe" --remove-startup'
FunctionEnd

; The check box shows how things are: after an upgrade they stay as they were.
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

; The page calls it for a checked box; SetStartup has done all.
Function Nothing
FunctionEnd

Section "un.Morvane"
    SectionIn RO
    Call un.Remove
SectionEnd

; A choice only: the program itself deletes its settings, as long as it is there.
Section /o "un.$(REMOVE_SETTINGS)" SettingsSection
SectionEnd

Function un.Remove
    SetShellVarContext current
    Call un.RequireNoRunningCopy
    ${If} ${Errors}
        SetErrorLevel ${EXIT_STILL_RUNNING}
        Abort
    ${EndIf}

    StrCpy $R9 0
    ${If} ${FileExists} "$INSTDIR\Morvane.exe"
        ExecWait '"$INSTDIR\Morvane.exe" --remove-startup'
    ${EndIf}
    ${If} ${SectionIsSelected} ${SettingsSection}
        ClearErrors
        ExecWait '"$INSTDIR\Morvane.exe" --remove-data' $0
        ${If} ${Errors}
        ${OrIf} $0 <> 0
            StrCpy $R9 1
        ${EndIf}
    ${EndIf}

    ClearErrors
    Delete "$INSTDIR\Morvane.exe"
    ${If} ${Errors}
        ; The entry in the list of programs stays, so that it can be tried again.
        SetErrorLevel ${EXIT_NOT_WRITTEN}
        DetailPrint "$(NOT_DELETED)"
        MessageBox MB_OK|MB_ICONSTOP "$(NOT_DELETED)" /SD IDOK
        Abort
    ${EndIf}
    Delete "$INSTDIR\LICENSE.txt"
    Delete "$INSTDIR\Uninstall.exe"
    Delete "${START_MENU_ENTRY}"
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
    ; Only when nothing of the user's is in it.
    SetOutPath "$TEMP"
    RMDir "$INSTDIR"

    ${If} $R9 = 1
        SetErrorLevel ${EXIT_DATA_KEPT}
        DetailPrint "$(DATA_KEPT)"
        MessageBox MB_OK|MB_ICONEXCLAMATION "$(DATA_KEPT)" /SD IDOK
    ${EndIf}
FunctionEnd

Function un.onInit
    ${GetParameters} $R0
    ClearErrors
    ${GetOptions} $R0 "/REMOVEDATA" $R1
    ${IfNot} ${Errors}
        !insertmacro SelectSection ${SettingsSection}
    ${EndIf}
FunctionEnd
