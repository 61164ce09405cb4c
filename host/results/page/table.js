// A table of which only the rows in sight are elements of the page, so that a hundred thousand rows scroll as ten do.
// Columns: { title, unit, text(row), key(row) for sorting and comparing, left, width in characters, names in filters,
// strong(row), screen: not on paper }.

const ROW = 26;           // pixels
const SPARE = 12;         // rows above and below the window
const PRINTED_ROWS = 2500;
const naturally = new Intl.Collator("en", { numeric: true });

// "w>2 r<=0.1 from=S1 word": comparisons of columns, and words of the columns of text; all have to hold.
function parseFilter(text, columns) {
  const tests = [];
  for (const part of text.trim().split(/\s+/).filter(Boolean)) {
    const [, name, sign, wanted] = part.match(/^([^<>=]+)(<=|>=|<|>|=)(.+)$/) || [];
    const column = name && columns.find((c) => c.names.includes(name.toLowerCase()));
    if (column && sign === "=") {
      tests.push((row) => column.text(row).toLowerCase() === wanted.toLowerCase());
    } else if (column && Number.isFinite(Number(wanted))) {
      const limit = Number(wanted), holds = { "<": (x) => x < limit, ">": (x) => x > limit, "<=": (x) => x <= limit, ">=": (x) => x >= limit }[sign];
      tests.push((row) => {
        const shown = column.text(row);
        return shown !== "" && holds(Math.abs(Number(shown)));
      });
    } else {
      const word = part.toLowerCase();
      tests.push((row) => columns.some((c) => c.left && c.text(row).toLowerCase().includes(word)));
    }
  }
  return (row) => tests.every((test) => test(row));
}

class Table {
  constructor(name, columns, rows, choose) {
    Object.assign(this, { name, columns, rows, choose, shown: rows, sorted: -1, falling: false, selected: null, filter: "" });
    for (const c of columns) c.names = [c.title.toLowerCase(), ...(c.names || [])];
    this.body = element("tbody");
    this.heads = columns.map((c, i) => element("th", { scope: "col", class: c.left ? "text" : null, "aria-sort": "none" },
      element("button", { type: "button", title: c.about || `Sort by ${c.title}`, click: () => this.sort(i) }, c.title, element("small", {}, c.unit || ""))));
    const widths = columns.map((c) => this.widthOf(c));
    const table = element("table", { style: `width:max(100%, ${widths.reduce((a, b) => a + b, 0)}ch)`, "aria-rowcount": rows.length },
      element("colgroup", {}, ...widths.map((w) => element("col", { style: `width:${w}ch` }))),
      element("thead", {}, element("tr", {}, ...this.heads)), this.body);
    this.window = element("div", { class: "window", tabindex: 0, role: "region", "aria-label": name, scroll: () => this.draw(), keydown: (e) => this.key(e) }, table);
    this.printed = element("div", { class: "printed" });
    this.element = element("div", {}, this.window, this.printed);
    this.draw();
  }

  // In characters, from the longest text of a sample.
  widthOf(column) {
    let most = Math.max(column.title.length, (column.unit || "").length);
    const step = Math.max(1, Math.floor(this.rows.length / 300));
    for (let i = 0; i < this.rows.length; i += step) most = Math.max(most, column.text(this.rows[i]).length);
    return Math.min(Math.max(most, 3), column.width || 26) * 1.05 + 2.5;
  }

  sort(column) {
    this.falling = this.sorted === column ? !this.falling : false;
    this.sorted = column;
    this.heads.forEach((h, i) => h.setAttribute("aria-sort", i !== column ? "none" : this.falling ? "descending" : "ascending"));
    this.heads.forEach((h, i) => { h.querySelector("small").textContent = (this.columns[i].unit || "") + (i === column ? (this.falling ? " ▼" : " ▲") : ""); });
    this.update();
    this.window.scrollTop = 0;
  }

  setFilter(text) {
    this.filter = text;
    this.update();
  }

  // Rows without a value stand last in either order.
  ordered(rows) {
    const column = this.columns[this.sorted], turn = this.falling ? -1 : 1;
    const keyed = rows.map((row) => ({ row, key: column.key ? column.key(row) : column.text(row) }));
    const none = ({ key }) => key === null || key === undefined || key === "" || Number.isNaN(key);
    const there = keyed.filter((k) => !none(k)), compare = there.length && typeof there[0].key === "number" ? (a, b) => turn * (a.key - b.key) : (a, b) => turn * naturally.compare(a.key, b.key);
    return [...there.sort(compare), ...keyed.filter(none)].map((k) => k.row);
  }

  update() {
    const rows = this.filter.trim() ? this.rows.filter(parseFilter(this.filter, this.columns)) : this.rows.slice();
    this.shown = this.sorted < 0 ? rows : this.ordered(rows);
    this.draw(true);
    if (this.changed) this.changed();
  }

  cells(row, columns = this.columns) {
    return columns.map((c) => {
      const text = c.text(row);
      return element("td", { class: [c.left ? "text" : "", c.width ? "long" : "", c.strong && c.strong(row) ? "strong" : ""].join(" ").trim() || null, title: text.length > (c.width || 26) ? text : null }, text);
    });
  }

  draw(anew = false) {
    const first = Math.max(0, Math.floor(this.window.scrollTop / ROW) - SPARE);
    const last = Math.min(this.shown.length, first + Math.ceil((this.window.clientHeight || 480) / ROW) + 2 * SPARE);
    if (!anew && first === this.first && last === this.last) return;
    this.first = first;
    this.last = last;
    const spacer = (rows) => element("tr", { class: "spacer", "aria-hidden": "true" }, element("td", { colspan: this.columns.length, style: `height:${rows * ROW}px` }));
    const rows = this.shown.slice(first, last).map((row, i) =>
      element("tr", { "aria-rowindex": first + i + 1, "aria-selected": row === this.selected ? "true" : null, click: () => this.select(row) }, ...this.cells(row)));
    this.body.replaceChildren(spacer(first), ...rows, spacer(this.shown.length - last));
  }

  select(row, tell = true) {
    this.selected = row;
    this.draw(true);
    if (tell && this.choose) this.choose(row);
  }

  // Brings a row into the window, if the filter lets it.
  show(row) {
    this.select(row, false);
    const i = this.shown.indexOf(row);
    if (i < 0) return;
    const top = i * ROW, height = this.window.clientHeight - 2 * ROW;
    if (top < this.window.scrollTop || top > this.window.scrollTop + height - ROW) this.window.scrollTop = Math.max(0, top - height / 2);
    this.draw(true);
  }

  key(event) {
    if (event.target !== this.window) return;
    const step = { ArrowDown: 1, ArrowUp: -1, PageDown: 12, PageUp: -12, Home: -Infinity, End: Infinity }[event.key];
    if (event.key === "Enter" && this.selected && this.choose) this.choose(this.selected);
    if (step === undefined || !this.shown.length) return;
    event.preventDefault();
    const now = this.shown.indexOf(this.selected);
    const next = Math.min(this.shown.length - 1, Math.max(0, now < 0 ? 0 : now + step));
    this.show(this.shown[next]);
  }

  // For print the window becomes a plain table.
  // On paper is no room for columns without anything in them, and for some others.
  print() {
    const rows = this.shown.slice(0, PRINTED_ROWS), columns = this.columns.filter((c) => !c.screen && rows.some((row) => c.text(row) !== ""));
    const head = columns.map((c) => element("th", { class: c.left ? "text" : null }, c.title, c.unit ? ` ${c.unit}` : ""));
    const rest = this.shown.length - rows.length;
    this.printed.replaceChildren(element("h3", {}, this.name),
      element("table", {}, element("thead", {}, element("tr", {}, ...head)), element("tbody", {}, ...rows.map((row) => element("tr", {}, ...this.cells(row, columns))))),
      ...(rest > 0 ? [element("p", {}, `${rest} more rows are in the page, the report and the CSV tables.`)] : []));
  }

  unprint() { this.printed.replaceChildren(); }

  csv() {
    const quoted = (text) => (/[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text);
    const head = this.columns.map((c) => quoted(c.unit ? `${c.title} [${c.unit}]` : c.title)).join(",");
    return [head, ...this.shown.map((row) => this.columns.map((c) => quoted(c.text(row))).join(","))].join("\r\n") + "\r\n";
  }
}
