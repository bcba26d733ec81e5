#include "gateway/member_table.h"
