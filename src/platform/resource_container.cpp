#include "platform/resource_container.h"
