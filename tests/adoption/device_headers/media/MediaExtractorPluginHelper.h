// The platform's helper classes as the public tree has them: the group's field has its other name.
#define mGroupHelper mBufferGroup
#include_next <media/MediaExtractorPluginHelper.h>
#undef mGroupHelper
