#include "platform/worker_thread.h"
