// The slots by name and number, from the list.
#ifndef QVR_FRAME_SLOTS_H
#define QVR_FRAME_SLOTS_H

enum {
#define QVR_SLOT(prefix, ...) qvrSlot_##prefix,
#include "frame/slots.def"
    qvrSlotCount
};

#endif
