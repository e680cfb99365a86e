/* The commands of the viewer. */
#ifndef TOOLS_VIEW_IDS_H
#define TOOLS_VIEW_IDS_H

#define VIEW_MENU 1
#define VIEW_KEYS 2

#define CMD_OPEN 101
#define CMD_SAVE 102
#define CMD_COPY 103
#define CMD_CALS_HEADER 104
#define CMD_EXIT 105
#define CMD_EDIT_NOTE 106
#define CMD_DELETE_NOTE 107

#define CMD_FIRST_PAGE 201
#define CMD_PREVIOUS_PAGE 202
#define CMD_NEXT_PAGE 203
#define CMD_LAST_PAGE 204

/* In the order of the modes. */
#define CMD_FIT_PAGE 301
#define CMD_FIT_WIDTH 302
#define CMD_TRUE_SIZE 303
#define CMD_PIXELS 304
#define CMD_ZOOM_IN 305
#define CMD_ZOOM_OUT 306
#define CMD_TURN_LEFT 307
#define CMD_TURN_RIGHT 308
#define CMD_INVERT 309
#define CMD_GREY 310

#endif
