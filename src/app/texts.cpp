#include "app/texts.h"
