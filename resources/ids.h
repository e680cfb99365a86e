/* The controls of the dialogs. Programs that fill in dialogs by number rely on them. */
#ifndef TIFF_RESOURCE_IDS_H
#define TIFF_RESOURCE_IDS_H

#define CALS_INFO_PATH 111
#define CALS_INFO_RECORDS 1001

#define CALS_EDIT_TYPE 111
#define CALS_EDIT_ORIENTATION 1003
#define CALS_EDIT_PIXELS 1004
#define CALS_EDIT_DENSITY 1005
#define CALS_EDIT_SOURCE 1006
#define CALS_EDIT_DESTINATION 1007
#define CALS_EDIT_TEXT_FILE 1008
#define CALS_EDIT_FIGURE 1009
#define CALS_EDIT_GRAPH 1010
#define CALS_EDIT_CLASS 1011
#define CALS_EDIT_NOTES 1012
#define CALS_EDIT_PATH 1013

#endif
