// Elements of the page. Text from the results only ever becomes text.

const SVG = "http://www.w3.org/2000/svg";
const byId = (id) => document.getElementById(id);

// An element with attributes (functions become listeners) and children, which are elements or texts.
function element(tag, attributes = {}, ...children) {
  const made = document.createElement(tag);
  for (const [key, value] of Object.entries(attributes)) {
    if (typeof value === "function") made.addEventListener(key, value);
    else if (value !== null && value !== undefined && value !== false) made.setAttribute(key, value === true ? "" : value);
  }
  made.append(...children.filter((c) => c !== null && c !== undefined));
  return made;
}

function drawn(tag, attributes = {}, ...children) {
  const made = document.createElementNS(SVG, tag);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  made.append(...children);
  return made;
}

// Hands a text to the user as a file.
function save(name, type, text) {
  const url = URL.createObjectURL(new Blob([text], { type }));
  const link = element("a", { href: url, download: name });
  link.click();
  setTimeout(() => URL.revokeObjectURL(url), 10000);
}
