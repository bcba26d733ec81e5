#include "platform/automation.h"
