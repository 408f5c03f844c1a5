#include "src/frame/messages.h"
#include "text/windows1252.h"

#include <algorithm>
#include <array> // std::begin

namespace vark {

namespace {

using namespace text;

struct NumberedText {
    int32_t Number;
    const char *Text;
};

// In ascending order: the library's own from 1000, the statuses of the record manager from 3100.
constexpr NumberedText numberedTexts[] = {
#define VARK_MESSAGE(Number, Name, Text) {Number, Text},
#include "src/frame/messages.def"
#undef VARK_MESSAGE
    {3100, "OK"_w},
    {3101, "Invalid operation"_w},
    {3102, "I/O Error"_w},
    {3103, "File not open"_w},
    {3104, "Key value not found"_w},
    {3105, "Duplicate key value"_w},
    {3106, "Invalid key number"_w},
    {3107, "Different key number"_w},
    {3108, "Invalid positioning"_w},
    {3109, "End of file"_w},
    {3110, "Modifiable key value error"_w},
    {3111, "Invalid filename"_w},
    {3112, "File %s not found"_w},
    {3113, "Extended file error"_w},
    {3114, "Pre-Image open error"_w},
    {3115, "Pre-Image I/O error"_w},
    {3116, "Expansion error"_w},
    {3117, "Close error"_w},
    {3118, "Disk full"_w},
    {3119, "Unrecoverable error"_w},
    {3120, "Record manager inactive"_w},
    {3121, "Key buffer too short"_w},
    {3122, "Data buffer length"_w},
    {3123, "Position block length"_w},
    {3124, "Page size error"_w},
    {3125, "Create I/O error"_w},
    {3126, "Number of keys"_w},
    {3127, "Invalid key position"_w},
    {3128, "Invalid record length"_w},
    {3129, "Invalid key length"_w},
    {3130, "Not a btrieve file"_w},
    {3131, "File already extended"_w},
    {3132, "Extend I/O error"_w},
    {3134, "Invalid extension name"_w},
    {3135, "Directory error"_w},
    {3136, "Transaction error"_w},
    {3137, "Transaction is active"_w},
    {3138, "Transaction control file I/O error"_w},
    {3139, "End/Abort transaction error"_w},
    {3140, "Transaction max files"_w},
    {3141, "Operation not allowed"_w},
    {3142, "Incomplete accelerated access"_w},
    {3143, "Invalid record address"_w},
    {3144, "Null key path"_w},
    {3145, "Inconsistent key flags"_w},
    {3146, "Access to file denied"_w},
    {3147, "Maximum open files"_w},
    {3148, "Invalid alternate sequence definition"_w},
    {3149, "Key type error"_w},
    {3150, "Owner already set"_w},
    {3151, "Invalid owner"_w},
    {3152, "Error writing cache"_w},
    {3153, "Invalid interface"_w},
    {3154, "Variable page error"_w},
    {3155, "Autoincrement error"_w},
    {3156, "Incomplete index"_w},
    {3157, "EMM context error"_w},
    {3158, "Compression buffer too short"_w},
    {3159, "File already exists"_w},
    {3160, "Reject count reached"_w},
    {3161, "Workspace buffer too small"_w},
    {3162, "Incorrect descriptor"_w},
    {3163, "Incorrect extended insert buffer"_w},
    {3164, "Filter limit reached"_w},
    {3165, "Incorrect field offset"_w},
    {3174, "End Transaction changed to Abort Transaction"_w},
    {3175, "Server routing list too small"_w},
    {3176, "File server list too small"_w},
    {3177, "Vap wait err"_w},
    {3178, "Deadlock detected"_w},
    {3179, "Programming error"_w},
    {3180, "Conflict error"_w},
    {3181, "Lock error"_w},
    {3182, "Lost position"_w},
    {3183, "Read outside transaction"_w},
    {3184, "Record in use"_w},
    {3185, "File in use"_w},
    {3186, "File table full"_w},
    {3187, "Handle table full"_w},
    {3188, "Incompatible mode error"_w},
    {3190, "Redirected device table full"_w},
    {3191, "Server error"_w},
    {3192, "Transaction table full"_w},
    {3193, "Incompatible lock type"_w},
    {3194, "Permission error"_w},
    {3195, "Session no longer valid"_w},
    {3196, "Communications environment error"_w},
    {3197, "Data message too small"_w},
    {3198, "Internal transaction error"_w},
    {3201, "Lock Parameter Out of Range"_w},
    {3202, "Memory Allocation Error"_w},
    {3203, "Memory Parameter Too Small"_w},
    {3204, "Page Size Parameter Out Of Range"_w},
    {3205, "Invalid Preimage Drive Parameter"_w},
    {3206, "Preimage Buffer Parameter Out Of Range"_w},
    {3207, "Files Parameter Out Of Range"_w},
    {3208, "Invalid Initialization Parameter"_w},
    {3209, "Invalid Transaction Parameter"_w},
    {3211, "Compression Buffer Out Of Range"_w},
    {3212, "Invalid Value For /N: Option"_w},
    {3213, "DLL's Task List Is Full"_w},
    {3214, "Stop Warning"_w},
    {3216, "Already Initialized"_w},
    {3221, "Insufficient Memory"_w},
    {3222, "Parameter Invalid or Out Of Range"_w},
    {3223, "Cannot Access Files on local Disk"_w},
    {3225, "Spx not installed Correctly"_w},
    {3227, "No Task Slots available"_w},
};

} // namespace

const char *MessageText(int32_t number)
{
    const NumberedText *const end = std::end(numberedTexts);
    const NumberedText *const entry =
        std::lower_bound(std::begin(numberedTexts), end, number,
                         [](const NumberedText &text, int32_t wanted) { return text.Number < wanted; });
    return entry != end && entry->Number == number ? entry->Text : nullptr;
}

} // namespace vark
