#include "platform/machine_config.h"
