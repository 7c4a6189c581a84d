#include "consoles_fixture.h"
