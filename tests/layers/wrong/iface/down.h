// A change above.
#pragma once

extern "C" int Exported(int number);
