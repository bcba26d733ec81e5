#include "platform/named_mutex.h"
