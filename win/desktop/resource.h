#pragma once

// Numbers of the resources. Those of dialogs, controls, Pause and Cancel are known outside the program:
// scripts that drive it, and its tests, find things by them.

#define IDI_PARVIGIF 101
#define IDR_MENU 102
#define IDR_ACCELERATORS 103

#define IDD_PREFERENCES 131
#define IDC_BACKUP 1000
#define IDC_LOG 1001
#define IDC_OVERWRITE_BACKUPS 1005
#define IDC_LOG_ALL 1024
#define IDC_LOG_RESULTS 1025
#define IDC_ALLOW_CROP 1026
#define IDC_LOSSLESS 1027

#define IDD_PROGRESS 132
#define IDC_PAUSE 1007
#define IDC_CANCEL 1008
#define IDC_FILE_NAME 1013
#define IDC_FILE_SIZE 1015
#define IDC_FILES_TO_DATE 1016
#define IDC_THIS_FILE 1017
#define IDC_THIS_BATCH 1018
#define IDC_TO_DATE 1019
#define IDC_THIS_FILE_PERCENT 1020
#define IDC_THIS_BATCH_PERCENT 1022

#define IDD_ABOUT 133

// Children of the main window.
#define IDC_SESSION_LIST 1101
#define IDC_PREVIEW 1102
#define IDC_STATUS 1103

#define IDM_OPEN_FILES 40001
#define IDM_OPEN_FOLDER 40002
#define IDM_EXIT 40003
#define IDM_OPEN_LOG 40004
#define IDM_CLEAR_LOG 40005
#define IDM_PREFERENCES 40006
#define IDM_ABOUT 40007
#define IDM_PAUSE 40015
#define IDM_CANCEL 40016
