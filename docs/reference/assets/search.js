// Search over every message, field, enumeration and value, from the index made with the pages; and
// the button that opens the contents on narrow screens.
// Keys: "/" goes to the search, arrows choose, Enter opens, Escape closes.

"use strict";

(() => {
  const LIMIT = 40;
  const NOISE = new Set("a an and did do does for how i in is it my of on the to was what".split(" "));

  // What people say and what the schema says instead, most wanted first.
  const EVERYDAY = {
    "airplane mode": ["radio state off", "radio power"],
    "caller id": ["Clir", "Call numberpresentation"],
    "carrier": ["OperatorResponse"],
    "cell tower": ["cell identity"],
    "dropped call": ["LastCallFailureCauseResponse", "LastCallFailCause"],
    "emergency call": ["EmergencyDial"],
    "end call": ["Hangup"],
    "flight mode": ["radio state off", "radio power"],
    "hang up": ["Hangup"],
    "hide number": ["Clir"],
    "hotspot": ["share confirm"],
    "keypad": ["SendBurstDtmf"],
    "make call": ["Dial"],
    "microphone": ["SetMute"],
    "phone call": ["Dial", "Call"],
    "phone number": ["Dial address", "Call number", "number"],
    "put down": ["Hangup"],
    "reception": ["SignalStrength", "GetSignalStrengthResponse"],
    "signal bars": ["SignalStrength", "GetSignalStrengthResponse"],
    "sim card": ["IccCardStatusResponse", "card"],
    "tethering": ["share confirm"],
    "text message": ["SendGSMSms", "ImsSmsMessage", "sms"],
    "touch tone": ["SendBurstDtmf"],
    "video call": ["video telephony"],
    "why call end": ["LastCallFailureCauseResponse", "LastCallFailCause"],
    "wifi calling": ["CALL_RAT_WIFI"],
  };

  const glue = (name) => name.toLowerCase().replace(/[^a-z0-9]/g, "");
  const parts = (name) =>
    name.replace(/([a-z0-9])([A-Z])/g, "$1 $2").toLowerCase().split(/[^a-z0-9]+/).filter(Boolean);

  // "LastCallFailCause = 17" and "dial.clir" are two words each; "24.008" is one.
  const split = (text) =>
    text.toLowerCase().split(/[^\w.+*#-]+|(?<=[a-z_])\.|\.(?=[a-z_])/)
      .filter((word) => /[a-z0-9]/.test(word));

  // What is compared of one row of the index: the own name, the name of the message or enumeration
  // that it belongs to, and the comment.
  const entries = SEARCH_INDEX.map((row) => {
    const [name, what, , number, about] = row;
    const dot = name.lastIndexOf(".");
    const owner = dot >= 0 ? name.slice(0, dot) : what.startsWith("value of ") ? what.slice(9) : "";
    const own = name.slice(dot + 1);
    return {
      row, number, isField: dot >= 0,
      own: glue(own), ownParts: parts(own), owner: glue(owner), ownerParts: parts(owner),
      about: new Set(split(about)),
    };
  });

  // How well one word fits an entry, lower is better; Infinity when it does not. A field is found by
  // its number only beside another word.
  function fit(word, entry, isAlone) {
    const name = glue(word);
    if (/^-?(0x[0-9a-f]+|[0-9]+)$/.test(word)) {
      const number = word.startsWith("-") ? -Number(word.slice(1)) : Number(word);
      if (entry.number === number && !entry.isField) return 0;
      if (entry.number === number && !isAlone) return 1;
    } else if (name) {
      if (entry.own === name) return 0;
      if (entry.owner === name) return 1;
      if (entry.ownParts.includes(name) || entry.own.startsWith(name)) return 1;
      if (entry.ownerParts.includes(name)) return 2;
      if (name.length > 2 && entry.own.includes(name)) return 2.5;
      if (name.length > 2 && entry.owner.includes(name)) return 3;
    }
    if (entry.about.has(word)) return 4;
    for (const other of entry.about) if (word.length > 2 && other.startsWith(word)) return 4.5;
    return Infinity;
  }

  // Edits that turn one word into the other: a letter more, less, changed, or two swapped. Infinity
  // beyond `most`.
  function distance(a, b, most) {
    if (Math.abs(a.length - b.length) > most) return Infinity;
    let before = [], last = Array.from({ length: b.length + 1 }, (_, j) => j);
    for (let i = 1; i <= a.length; i++) {
      const next = [i];
      for (let j = 1; j <= b.length; j++) {
        next[j] = Math.min(last[j] + 1, next[j - 1] + 1, last[j - 1] + (a[i - 1] === b[j - 1] ? 0 : 1));
        if (i > 1 && j > 1 && a[i - 1] === b[j - 2] && a[i - 2] === b[j - 1]) {
          next[j] = Math.min(next[j], before[j - 2] + 1);
        }
      }
      [before, last] = [last, next];
    }
    return last[b.length] <= most ? last[b.length] : Infinity;
  }

  // The same for a word that fits nowhere as it stands, so is probably mistyped.
  function nearFit(word, entry) {
    const name = glue(word);
    const most = name.length < 4 || /^[0-9]/.test(name) ? 0 : name.length < 8 ? 1 : 2;
    const nearest = (words) => Math.min(...[...words].map((other) => distance(name, other, most)));
    const beginnings = name.length < 6 ? [] : [0, 1].map((more) => entry.own.slice(0, name.length + more));
    return Math.min(
      6 + nearest([entry.own, ...entry.ownParts, ...beginnings]),
      7 + nearest([entry.owner, ...entry.ownerParts]),
      8 + nearest(entry.about),
    );
  }

  // The entries that every word of the query fits, with how well; if there is none, those that some
  // word fits. isNear: the query does not stand anywhere as it was typed.
  function match(words) {
    let isNear = false;
    const fits = words.map((word) => {
      const exact = entries.map((entry) => fit(word, entry, words.length === 1));
      if (exact.some(Number.isFinite)) return exact;
      isNear = true;
      return entries.map((entry) => nearFit(word, entry));
    });
    const whole = glue(words.join(""));
    const rate = (cost) => entries.map((entry, i) => {
      if (entry.own === whole) return [entry, entry.isField ? -1 : -2];
      const costs = fits.map((of) => Math.min(of[i], cost));
      const isFitting = costs.some((value) => value < cost) && costs.every(Number.isFinite);
      const sum = costs.reduce((total, value) => total + value, 0) / words.length;
      return [entry, isFitting ? sum + (entry.isField ? 0.1 : 0) : Infinity];
    }).filter(([, score]) => Number.isFinite(score));
    const hits = rate(Infinity);
    return hits.length ? { hits, isNear: isNear && hits[0][1] >= 0 } : { hits: rate(20), isNear: true };
  }

  // The rows to show, best first, and whether they are only similar to what was asked for.
  function find(query) {
    const typed = split(query);
    const wanted = typed.filter((word) => !NOISE.has(word));
    const words = wanted.length ? wanted : typed;
    if (words.length === 0) return { rows: [], isNear: false };
    const said = ` ${words.join(" ")} `;
    const best = new Map();
    const add = ({ hits, isNear }, bonus) => {
      for (const [entry, score] of hits) {
        best.set(entry, Math.min(best.get(entry) ?? Infinity, score - bonus));
      }
      return isNear;
    };
    let isNear = true;
    for (const [phrase, names] of Object.entries(EVERYDAY)) {
      if (!said.includes(` ${phrase} `)) continue;
      names.forEach((name, i) => {
        const meant = match(split(said.replace(phrase, name)));
        if (!meant.isNear) isNear = add(meant, 20 - i);
      });
    }
    const literal = match(words);
    if (isNear || !literal.isNear) isNear = add(literal, 0);
    const found = [...best].sort((a, b) => a[1] - b[1]);
    return { rows: found.slice(0, LIMIT).map(([entry]) => entry.row), isNear };
  }

  const input = document.getElementById("search");
  const panel = document.getElementById("found");
  const status = document.getElementById("status");
  const list = document.getElementById("results");
  let selected = -1;

  function element(tag, className, text) {
    const node = document.createElement(tag);
    if (className) node.className = className;
    node.textContent = text;
    return node;
  }

  function option([name, what, page, number, about], index) {
    const link = document.createElement("a");
    link.id = `result-${index}`;
    link.setAttribute("role", "option");
    link.setAttribute("aria-selected", "false");
    link.href = page;
    link.tabIndex = -1;
    link.append(
      element("code", "", name),
      element("span", "what", number === null ? what : what === "field" ? `field ${number}` : `${number}, ${what}`),
      element("span", "about", about),
    );
    return link;
  }

  function select(index) {
    const items = [...list.children];
    selected = items.length ? (index + items.length) % items.length : -1;
    items.forEach((item, i) => item.setAttribute("aria-selected", String(i === selected)));
    if (selected >= 0) {
      items[selected].scrollIntoView({ block: "nearest" });
      input.setAttribute("aria-activedescendant", items[selected].id);
    }
  }

  function show() {
    const { rows, isNear } = find(input.value);
    list.replaceChildren(...rows.map(option));
    list.hidden = rows.length === 0;
    status.textContent = !rows.length ? "Nothing of that name, number or word." : isNear ? "Not found. Similar:" : "";
    panel.hidden = input.value.trim() === "";
    input.setAttribute("aria-expanded", String(!panel.hidden));
    input.removeAttribute("aria-activedescendant");
    select(0);
  }

  function close() {
    panel.hidden = true;
    input.setAttribute("aria-expanded", "false");
    input.removeAttribute("aria-activedescendant");
  }

  const menu = document.getElementById("menu");
  const contents = document.getElementById("contents");
  function unfold(isOpen) {
    contents.classList.toggle("open", isOpen);
    menu.setAttribute("aria-expanded", String(isOpen));
  }

  input.addEventListener("input", show);
  input.addEventListener("focus", show);
  input.addEventListener("keydown", (event) => {
    if (event.key === "ArrowDown") select(selected + 1);
    else if (event.key === "ArrowUp") select(selected - 1);
    else if (event.key === "Enter" && list.children[selected]) list.children[selected].click();
    else if (event.key === "Escape") close();
    else return;
    event.preventDefault();
  });
  list.addEventListener("click", close);
  menu.addEventListener("click", () => unfold(!contents.classList.contains("open")));
  document.addEventListener("click", (event) => {
    if (!event.target.closest(".search")) close();
    if (event.target.closest("#contents a") || !event.target.closest("#contents, #menu")) unfold(false);
  });
  document.addEventListener("keydown", (event) => {
    const isTyping = /^(input|textarea|select)$/i.test(event.target.tagName);
    if (event.key === "Escape" && contents.classList.contains("open")) {
      unfold(false);
      menu.focus();
    }
    if (event.key === "/" && !isTyping && !event.ctrlKey && !event.metaKey && !event.altKey) {
      event.preventDefault();
      input.focus();
      input.select();
    }
  });
})();
