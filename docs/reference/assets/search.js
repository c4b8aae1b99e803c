// Search over every message, field, enumeration and value, from the index made with the pages.
// Keys: "/" goes to the search, arrows choose, Enter opens, Escape closes.

"use strict";

(() => {
  const LIMIT = 40;
  const input = document.getElementById("search");
  const list = document.getElementById("results");
  let selected = -1;

  // Lower is better; undefined when the row does not match. Names come before comments, exact
  // matches before beginnings, beginnings before parts. A field is found by its own name, or by
  // its message's name too when the query has a dot ("dial.clir").
  function rank([fullName, , , number, about], words) {
    const query = words.join(" ");
    const lower = fullName.toLowerCase();
    const name = query.includes(".") ? lower : lower.slice(lower.lastIndexOf(".") + 1);
    if (String(number) === query || name === query) return 0;
    if (name.startsWith(query)) return 1;
    if (words.every((word) => name.includes(word))) return 2;
    const text = `${lower} ${about.toLowerCase()}`;
    return words.every((word) => text.includes(word)) ? 3 : undefined;
  }

  function search(query) {
    const words = query.toLowerCase().split(/\s+/).filter(Boolean);
    if (words.length === 0) return [];
    return SEARCH_INDEX.map((row) => ({ row, rank: rank(row, words) }))
      .filter((hit) => hit.rank !== undefined)
      .sort((a, b) => a.rank - b.rank)  // Stable: equals keep the order of the schema.
      .slice(0, LIMIT)
      .map((hit) => hit.row);
  }

  function element(tag, className, text) {
    const node = document.createElement(tag);
    if (className) node.className = className;
    node.textContent = text;
    return node;
  }

  function entry([name, what, page, number, about], index) {
    const item = document.createElement("li");
    item.id = `result-${index}`;
    item.setAttribute("role", "option");
    const link = document.createElement("a");
    link.href = page;
    link.tabIndex = -1;
    link.append(
      element("code", "", name),
      element("span", "what", number === null ? what : `${number}, ${what}`),
      element("span", "about", about),
    );
    item.append(link);
    return item;
  }

  function select(index) {
    const items = list.querySelectorAll("[role=option]");
    selected = items.length ? (index + items.length) % items.length : -1;
    items.forEach((item, i) => item.setAttribute("aria-selected", String(i === selected)));
    if (selected >= 0) {
      items[selected].scrollIntoView({ block: "nearest" });
      input.setAttribute("aria-activedescendant", items[selected].id);
    }
  }

  function show() {
    const open = input.value.trim() !== "";
    const hits = search(input.value);
    list.replaceChildren(
      ...(hits.length ? hits.map(entry) : [element("li", "none", "Nothing of that name, number or word.")]),
    );
    list.hidden = !open;
    input.setAttribute("aria-expanded", String(open));
    input.removeAttribute("aria-activedescendant");
    select(0);
  }

  function close() {
    list.hidden = true;
    input.setAttribute("aria-expanded", "false");
    input.removeAttribute("aria-activedescendant");
  }

  input.addEventListener("input", show);
  input.addEventListener("focus", show);
  input.addEventListener("keydown", (event) => {
    const target = list.querySelectorAll("a")[selected];
    if (event.key === "ArrowDown") select(selected + 1);
    else if (event.key === "ArrowUp") select(selected - 1);
    else if (event.key === "Enter" && target) target.click();
    else if (event.key === "Escape") close();
    else return;
    event.preventDefault();
  });
  list.addEventListener("click", close);
  document.addEventListener("click", (event) => {
    if (!event.target.closest(".search")) close();
  });
  document.addEventListener("keydown", (event) => {
    const typing = /^(input|textarea|select)$/i.test(event.target.tagName);
    if (event.key === "/" && !typing && !event.ctrlKey && !event.metaKey && !event.altKey) {
      event.preventDefault();
      input.focus();
      input.select();
    }
  });
})();
