#include "platform/code_page.h"
