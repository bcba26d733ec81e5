#include "app/data_file.h"
