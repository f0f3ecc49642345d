// Ids of the program's resources, for the resource script and the code alike.
#pragma once

#define IDI_KESTRELGUARD 101  // first in the file, so that Explorer shows it

// Pictures of the tree of browser windows, 16 by 16 (24 at 144 dpi); KG_IMGL's images 1 to 3 in this order.
#define IDI_TREE_DETAIL 111
#define IDI_TREE_ROOT 112
#define IDI_TREE_BROWSER 113

// Pictures of the pages, 32 by 32 (48 at 144 dpi); packed.
#define IDI_POPUP 121      // popPIC
#define IDI_STARTUP 122    // Image1
#define IDI_GEAR 123       // ss_GearImg
#define IDI_BROOM 124      // Image2
#define IDI_WEBFOLDER 125  // IE_WbFold
#define IDI_HISTORY 126    // IE_Hist
#define IDI_WINDOWS 127    // winInstImg; 16 by 16 (24 at 144 dpi)
