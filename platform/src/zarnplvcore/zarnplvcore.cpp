// Whether the system runs as the container edition: docker=yes in the key file /etc/zarnplv.conf.
#include <zarncore/zarncore.h>
#include <zarnplvcore/zarnplvcore.h>

int ZARNIsDockerPLV(void) {
  return KOPACFileCheckKeyValue("/etc/zarnplv.conf", "docker", "yes", 0) == 1 ? 1 : 0;
}
