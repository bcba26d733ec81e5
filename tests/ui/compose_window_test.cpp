#include "ui/compose_fixture.h"
