#include "component/register_component.h"
