// SPDX-License-Identifier: Apache-2.0
// A change above.
#pragma once

extern "C" int Exported(int number);
