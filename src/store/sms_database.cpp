#include "store/sms_database.h"
