#include "app/log_file.h"
