// Finding a point by its name: names that begin with what is typed first, then those that contain it.

const OFFERED = 12;

function findNames(points, text) {
  const wanted = text.toLowerCase(), begin = [], inside = [];
  for (const p of points) {
    const name = p.name.toLowerCase();
    if (name.startsWith(wanted)) (name === wanted ? begin.unshift(p) : begin.push(p));
    else if (inside.length < OFFERED && name.includes(wanted)) inside.push(p);
    if (begin.length > 400) break;
  }
  return [...begin, ...inside].slice(0, OFFERED);
}

function makeSearch(points, choose) {
  const input = byId("search"), list = byId("found");
  let offered = [], active = 0;
  const close = () => {
    list.hidden = true;
    input.setAttribute("aria-expanded", "false");
  };
  const mark = () => [...list.children].forEach((li, i) => li.setAttribute("aria-selected", String(i === active)));
  const take = (p) => {
    input.value = p.name;
    close();
    choose(p);
  };
  const offer = () => {
    offered = input.value ? findNames(points, input.value) : [];
    active = 0;
    list.replaceChildren(...offered.map((p) => element("li", { role: "option", pointerdown: (e) => { e.preventDefault(); take(p); } }, p.name)));
    if (input.value && !offered.length) list.replaceChildren(element("li", {}, "no such point"));
    list.hidden = !input.value;
    input.setAttribute("aria-expanded", String(!list.hidden));
    mark();
  };
  input.addEventListener("input", offer);
  input.addEventListener("focus", () => input.select());
  input.addEventListener("blur", close);
  input.addEventListener("keydown", (event) => {
    if (event.key === "ArrowDown" || event.key === "ArrowUp") {
      event.preventDefault();
      active = (active + (event.key === "ArrowDown" ? 1 : offered.length - 1)) % (offered.length || 1);
      mark();
    } else if (event.key === "Enter" && offered[active]) take(offered[active]);
    else if (event.key === "Escape") { input.value = ""; close(); }
  });
}
