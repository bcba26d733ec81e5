#include "store/sms_status.h"
