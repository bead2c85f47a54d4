// SPDX-License-Identifier: Apache-2.0
// The look of a page, light or dark as its reader has it, on a telephone and on paper. It has none
// of the signs that XML would read.
#pragma once

namespace tool {

inline constexpr char kPageStyle[] = R"css(
:root {
  color-scheme: light dark;
  --back: #ffffff; --card: #f6f8fa; --text: #1f2328; --faint: #59636e; --line: #d1d9e0;
  --good: #1a7f37; --good-back: #dafbe1; --warn: #7d4e00; --warn-back: #fff8c5;
  --bad: #b3141f; --bad-back: #ffebe9;
}
@media (prefers-color-scheme: dark) {
  :root {
    --back: #0d1117; --card: #151b23; --text: #e6edf3; --faint: #9198a1; --line: #3d444d;
    --good: #3fb950; --good-back: #12261e; --warn: #d29922; --warn-back: #272115;
    --bad: #ff7b72; --bad-back: #2d1517;
  }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; }
body {
  margin: 0; background: var(--back); color: var(--text);
  font: 15px/1.5 system-ui, -apple-system, "DejaVu Sans", sans-serif;
}
main { max-width: 92rem; margin: 0 auto; padding: 1.5rem 1rem 3rem; }
h1 { font-size: 1.6rem; line-height: 1.25; margin: 0; overflow-wrap: anywhere; }
h2 { font-size: 1.1rem; margin: 0 0 0.75rem; }
p { margin: 0 0 0.75rem; overflow-wrap: anywhere; }
.summary, .note { color: var(--faint); }
section {
  margin: 1rem 0 0; padding: 1rem; background: var(--card); border: 1px solid var(--line);
  border-radius: 8px; min-width: 0;
}
.scroll { overflow-x: auto; max-width: 100%; margin: 0 0 0.75rem; }
section .scroll:last-child, section p:last-child { margin-bottom: 0; }
table { border-collapse: collapse; width: 100%; font-size: 0.875rem; }
th, td {
  text-align: left; vertical-align: top; padding: 0.4rem 0.875rem 0.4rem 0;
  border-bottom: 1px solid var(--line); unicode-bidi: isolate;
}
tr:last-child th, tr:last-child td { border-bottom: 0; }
thead th { color: var(--faint); font-weight: 600; white-space: nowrap; }
tbody th { font-weight: 600; white-space: nowrap; }
td {
  min-width: 4rem; max-width: 32rem; overflow-wrap: break-word;
  font-variant-numeric: tabular-nums;
}
.facts { width: auto; }
.facts td { overflow-wrap: anywhere; }
.good { color: var(--good); font-weight: 600; }
.bad { color: var(--bad); font-weight: 600; }
.pictures { display: flex; flex-wrap: wrap; gap: 0.75rem; align-items: flex-start; }
.pictures .scroll { margin: 0; }
.pictures + p { margin-top: 0.75rem; }
svg { display: block; }
svg text { fill: var(--text); font-size: 12px; }
svg .name { font-weight: 700; font-size: 13px; }
svg .role { fill: var(--faint); }
svg .address { font-family: ui-monospace, "DejaVu Sans Mono", monospace; font-size: 11px; }
svg rect { stroke-width: 1.5; }
.up rect { stroke: var(--good); fill: var(--good-back); }
.no-link rect { stroke: var(--warn); fill: var(--warn-back); stroke-dasharray: 7 4; }
.down rect, .missing rect { stroke: var(--bad); fill: var(--bad-back); stroke-dasharray: 2 4; }
.edge { fill: none; stroke: var(--faint); stroke-width: 1.5; }
summary { cursor: pointer; }
pre {
  overflow-x: auto; margin: 0.75rem 0 0;
  font: 12px/1.45 ui-monospace, "DejaVu Sans Mono", monospace;
}
:focus-visible { outline: 2px solid var(--faint); outline-offset: 2px; }
@media (max-width: 60rem) {
  table { width: max-content; min-width: 100%; }
  td { max-width: 26rem; }
  .facts { width: auto; min-width: 0; }
}
@media (min-width: 60rem) { main { padding: 2rem 2rem 4rem; } }
@media print { section { break-inside: avoid; } main { padding: 0; max-width: none; } }
)css";

}  // namespace tool
