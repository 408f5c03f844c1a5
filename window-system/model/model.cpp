#include "window-system/model/model.h"

namespace varkui {

Model model = {PTHREAD_MUTEX_INITIALIZER, nullptr, nullptr, nullptr, nullptr, 8, 20};
FrontEndCalls frontEnd;

void Lock() { pthread_mutex_lock(&model.Lock); }

void Unlock() { pthread_mutex_unlock(&model.Lock); }

} // namespace varkui
