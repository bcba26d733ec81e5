#include "store/message_type.h"
