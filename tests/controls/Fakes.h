#pragma once

#include "controls/FakeControls.h"
#include "controls/FakeLists.h"
#include "controls/FakeSystem.h"
#include "controls/FakeTree.h"
#include "controls/Faults.h"
