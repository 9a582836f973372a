// Running diagnostic tests: settings, polls, cancels, and what is left behind.
#include "tests/agent/agent_fixture.h"
