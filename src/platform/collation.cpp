#include "platform/collation.h"
