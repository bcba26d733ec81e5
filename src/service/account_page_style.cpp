#include "service/account_page_view.h"

namespace orvalo::service {

const char kAccountPageStyle[] = R"css(:root {
  color-scheme: light dark;
  --window: #f3f5f7; --surface: #ffffff; --field: #ffffff; --border: #d3d9e0; --text: #17212b; --muted: #5b6875;
  --accent: #0b6e6e; --accent-hover: #095858; --accent-text: #ffffff; --accent-soft: #dceeed;
  --bad: #b3261e; --bad-soft: #fbe9e7; --wait: #8a5300; --good: #1b6e3c;
}
@media (prefers-color-scheme: dark) {
  :root {
    --window: #14191f; --surface: #1d242c; --field: #161c23; --border: #36414d; --text: #e7ecf1; --muted: #9facb9;
    --accent: #4fc3bd; --accent-hover: #74d4cf; --accent-text: #08211f; --accent-soft: #1f3b3c;
    --bad: #ff8a80; --bad-soft: #3b2323; --wait: #f0b65a; --good: #6fcf97;
  }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--window); color: var(--text); font: 16px/1.5 system-ui, sans-serif; }
.wrap { max-width: 64rem; margin: 0 auto; padding: 0 24px; }
header { background: var(--surface); border-bottom: 1px solid var(--border); }
header .wrap { display: flex; flex-wrap: wrap; align-items: center; justify-content: space-between; gap: 8px 24px;
  min-height: 64px; }
header form { display: flex; flex-wrap: wrap; align-items: center; gap: 8px 16px; }
.brand { margin: 0; font-size: 20px; font-weight: 650; color: var(--accent); letter-spacing: .01em; }
.who { color: var(--muted); }
.who bdi { color: var(--text); font-weight: 600; }
main { display: grid; grid-template-columns: 1fr 1fr; gap: 16px; align-items: stretch; }
h1 { grid-column: 1 / -1; margin: 32px 0 8px; font-size: 28px; line-height: 1.2; font-weight: 650; }
h2 { margin: 0 0 8px; font-size: 15px; font-weight: 600; color: var(--muted); }
.card { min-width: 0; padding: 24px; background: var(--surface); border: 1px solid var(--border); border-radius: 12px; }
.wide, .card:has(#statement) { grid-column: 1 / -1; }
.amount { margin: 0 0 16px; font-size: 48px; line-height: 1.1; font-weight: 650; font-variant-numeric: tabular-nums;
  overflow-wrap: anywhere; }
.amount small { font-size: 16px; font-weight: 400; color: var(--muted); }
dl { display: flex; flex-wrap: wrap; gap: 8px 32px; margin: 0; }
dt { color: var(--muted); font-size: 14px; }
dd { margin: 0; font-weight: 600; font-variant-numeric: tabular-nums; }
label { display: block; margin: 0 0 8px; }
.row { display: flex; flex-wrap: wrap; gap: 8px; }
input { flex: 1 1 14rem; min-width: 0; padding: 10px 12px; background: var(--field); color: inherit;
  border: 1px solid var(--border); border-radius: 8px; font: inherit; font-variant-numeric: tabular-nums; letter-spacing: .04em; }
input::placeholder { color: var(--muted); opacity: .7; }
button { padding: 10px 20px; background: var(--accent); color: var(--accent-text); border: 1px solid var(--accent);
  border-radius: 8px; font: inherit; font-weight: 600; cursor: pointer; }
button:hover { background: var(--accent-hover); border-color: var(--accent-hover); }
button.quiet { padding: 6px 14px; background: transparent; color: var(--text); border-color: var(--border); font-weight: 400; }
button.quiet:hover { background: var(--accent-soft); border-color: var(--accent); }
input:focus-visible, button:focus-visible { outline: 3px solid var(--accent); outline-offset: 2px; }
.notice { grid-column: 1 / -1; margin: 0; padding: 12px 16px; border-radius: 8px; border-left: 4px solid; font-weight: 600; }
.notice.good { background: var(--accent-soft); color: var(--good); }
.notice.bad { background: var(--bad-soft); color: var(--bad); }
.scroll { overflow-x: auto; }
table { width: 100%; border-collapse: collapse; font-size: 15px; }
th { padding: 8px 16px 8px 0; text-align: left; font-weight: 600; color: var(--muted); white-space: nowrap; }
td { padding: 10px 16px 10px 0; border-top: 1px solid var(--border); vertical-align: top; }
td:first-child, .phone, .status { white-space: nowrap; font-variant-numeric: tabular-nums; }
#statement td:nth-child(2) { width: 100%; }
td.text { width: 50%; min-width: 12rem; overflow-wrap: anywhere; }
.number { padding-right: 0; text-align: right; white-space: nowrap; font-variant-numeric: tabular-nums; }
.plus, .status.good { color: var(--good); }
.status { font-weight: 600; }
.status.wait { color: var(--wait); }
.status.bad { color: var(--bad); }
.none { color: var(--muted); }
footer { padding: 24px; color: var(--muted); font-size: 14px; }
.closed { display: block; padding-top: 48px; max-width: 40rem; }
.closed h1 { margin-top: 0; }
@media (max-width: 44rem) {
  main { grid-template-columns: 1fr; }
  .wrap { padding: 0 16px; }
  .card { padding: 16px; }
}
)css";

}  // namespace orvalo::service
