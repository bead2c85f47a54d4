#pragma once

#ifdef __cplusplus
extern "C" {
#endif

int ZARNIsDockerPLV(void);

#ifdef __cplusplus
}
#endif
