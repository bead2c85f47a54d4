// SPDX-License-Identifier: Apache-2.0
// The page for who helps: what stands in it, and what never does.
#include "ctl.h"
#include "support/transcript.h"

using namespace test;

namespace {

// Reads the page as strictly as XML: its sections, or rows of tables that have one of these words.
constexpr char kReadPage[] = R"py(
import sys, xml.etree.ElementTree as tree
page = tree.parse("/root/page.html").getroot()
if len(sys.argv) == 1:
    for section in page.iter("section"):
        pictures = [svg.find("title").text for svg in section.iter("svg")]
        print(section.find("h2").text, [p.text for p in section.iter("p")], pictures)
for row in page.iter("tr"):
    cells = ["".join(cell.itertext()) for cell in row]
    if any(word in cell for word in sys.argv[1:] for cell in cells): print(cells)
)py";

void SetUpMachine() {
  WriteFile("/root/read.py", kReadPage);
  for (const char* ifname : {"eth0", "eth1"})
    BringUp(ifname);
  WriteIfcfg("eth0", "BOOTPROTO=static\nIPADDR=192.168.50.10\nNETMASK=255.255.255.0\n");
  for (const char* ifname : {"eth1", "eth2", "eth3"})
    WriteIfcfg(ifname, "BOOTPROTO=none\n");
  Shell("ip address add 192.168.50.10/24 dev eth0; printf 'SECRET\\n' >/root/secret");
  Mask("([0-9]{4}-[0-9]{2}-[0-9T:+-]+Z?)", "TIME");
  Mask("Measured for ([0-9.]+)", "N");
}

}  // namespace

TEST(Reports, StandByThemselvesAndHaveNoSecret) {
  SetUpMachine();
  WriteFile("/etc/resolv.conf", "nameserver </style><img\n");
  Shell(R"sh(ip link add 'a"&lt;<b>' type bridge; ip link set eth1 master 'a"&lt;<b>')sh");
  Type(R"sh(
$ zarnnetctl -q pppoe set --interface eth1 --user bob --password-file /root/secret
$ zarnnetctl -q tunnel set --server broker --user bob --password-file /root/secret
$ grep -rlE 'SECRET' /etc | sort
$ zarnnetctl report --seconds 1 /root/page.html; stat -c %a /root/page.html
$ python3 /root/read.py
$ python3 /root/read.py 50.10/ eth3 'a"' '<img' store
$ grep -cE 'SECRET|<script|<img|<b>|@import|url\(|src=|http:|https:' /root/page.html
$ grep -o 'href="[^"]*"' /root/page.html
)sh");
}

TEST(Reports, TakeThePlaceOfARegularFileOnlyAndAreRootsAlone) {
  SetUpMachine();
  Type(R"sh(
$ echo kept >/root/other; ln -s other /root/page.html; mkfifo /root/fifo; touch /root/old; chmod 644 /root/old
report --seconds 1 /root/page.html
report --seconds 1 /root/fifo
report --seconds 1 /root/none/page.html
report --seconds 1 --json -
$ cat /root/other; zarnnetctl report --seconds 1 /root/old; stat -c '%a %h' /root/old; ls -A /root | grep zarnnet-
$ zarnnetctl report --seconds 1 - | tail -n 1
)sh");
}

// Another user may not read the changes, and nobody a record that was cut.
TEST(Reports, TellInItsPlaceWhatCannotBeRead) {
  SetUpMachine();
  Type(R"sh(
$ setpriv --reuid 65534 --regid 65534 --clear-groups zarnnetctl report --seconds 1 - >/root/page.html; echo $?
$ python3 /root/read.py | grep Changes
$ for verb in dns hostname; do setpriv --reuid 65534 --regid 65534 --clear-groups zarnnetctl $verb get; done
$ zarnnetctl -q hostname set nas; for file in `find /var/lib/zarnnet -type f`; do echo '{' >$file; done
$ zarnnetctl report --seconds 1 /root/page.html
$ python3 /root/read.py | grep Changes; python3 /root/read.py unreadable
)sh");
}
