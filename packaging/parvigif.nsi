; The installer for Windows. packaging/make passes VERSION, STAGE (the files) and OUTPUT.
Unicode true
Target amd64-unicode
!include MUI2.nsh

Name "Parvigif"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\Parvigif"
InstallDirRegKey HKLM "Software\Norvek\Parvigif" "Folder"
RequestExecutionLevel admin
ManifestDPIAware true
SetCompressor /SOLID lzma

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Parvigif"
VIAddVersionKey "CompanyName" "Norvek"
VIAddVersionKey "FileDescription" "Installs Parvigif"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "the Parvigif authors, MIT License"

!define MUI_ICON "../win/desktop/parvigif.ico"
!define MUI_UNICON "../win/desktop/parvigif.ico"
!define MUI_FINISHPAGE_RUN "$INSTDIR\Parvigif.exe"
!insertmacro MUI_PAGE_LICENSE "${STAGE}/LICENSE.txt"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\Parvigif"
; In the menu of every GIF file, whatever program opens it.
!define VERB "Software\Classes\SystemFileAssociations\.gif\shell\Parvigif"

Section
    SetRegView 64
    SetShellVarContext all
    SetOutPath "$INSTDIR"
    File "${STAGE}/Parvigif.exe"
    File "${STAGE}/parvigif-cli.exe"
    File "${STAGE}/README.txt"
    File "${STAGE}/options.txt"
    File "${STAGE}/LICENSE.txt"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CreateShortcut "$SMPROGRAMS\Parvigif.lnk" "$INSTDIR\Parvigif.exe"

    WriteRegStr HKLM "Software\Norvek\Parvigif" "Folder" "$INSTDIR"
    WriteRegStr HKLM "${VERB}" "" "Optimize with Parvigif"
    WriteRegStr HKLM "${VERB}" "Icon" '"$INSTDIR\Parvigif.exe"'
    WriteRegStr HKLM "${VERB}\command" "" '"$INSTDIR\Parvigif.exe" "%1"'

    WriteRegStr HKLM "${UNINSTALL}" "DisplayName" "Parvigif"
    WriteRegStr HKLM "${UNINSTALL}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "${UNINSTALL}" "DisplayIcon" "$INSTDIR\Parvigif.exe"
    WriteRegStr HKLM "${UNINSTALL}" "Publisher" "Norvek"
    WriteRegStr HKLM "${UNINSTALL}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKLM "${UNINSTALL}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKLM "${UNINSTALL}" "NoModify" 1
    WriteRegDWORD HKLM "${UNINSTALL}" "NoRepair" 1
SectionEnd

; Preferences, totals and the log belong to the user and stay.
Section "Uninstall"
    SetRegView 64
    SetShellVarContext all
    Delete "$INSTDIR\Parvigif.exe"
    Delete "$INSTDIR\parvigif-cli.exe"
    Delete "$INSTDIR\README.txt"
    Delete "$INSTDIR\options.txt"
    Delete "$INSTDIR\LICENSE.txt"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    Delete "$SMPROGRAMS\Parvigif.lnk"
    DeleteRegKey HKLM "${VERB}"
    DeleteRegKey HKLM "${UNINSTALL}"
    DeleteRegValue HKLM "Software\Norvek\Parvigif" "Folder"
SectionEnd
