// Lets a test decide which cache sizes the library believes in, and with them the paths of fills and copies.
#pragma once

#include "frame/processor.h"

class BelievedCache {
public:
    explicit BelievedCache(int32_t bytes, qvrStatus status = qvrOk)
    {
        qvrCacheStatus = qvrDescriptorCacheStatus = status;
        qvrCacheSize = qvrDescriptorCacheSize = bytes;
    }
    ~BelievedCache()
    {
        qvrCacheStatus = qvrDescriptorCacheStatus = 1;
        qvrCacheSize = qvrDescriptorCacheSize = 0;
    }
    BelievedCache(const BelievedCache&) = delete;
    BelievedCache& operator=(const BelievedCache&) = delete;
};
