#include "platform/text_format.h"
