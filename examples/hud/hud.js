// Displays the player's properties and signals. The last part contains all communication with the
// game.

"use strict";

const element = id => document.getElementById(id);

// --- Drawing ---------------------------------------------------------------------------------------

/** A number in seven-segment digits, which look the same on every machine. */
class Digits {
    // Clockwise from the top, then the middle segment; in a box of 40 x 70.
    static OUTLINES = [
        "M6 0H34L28 7H12Z", "M40 3V33L36 35 32 31V11Z", "M40 67V37L36 35 32 39V59Z",
        "M6 70H34L28 63H12Z", "M0 67V37L4 35 8 39V59Z", "M0 3V33L4 35 8 31V11Z",
        "M7 35L11 31H29L33 35 29 39H11Z",
    ];
    static LIT = ["012345", "12", "01346", "01236", "1256", "02356", "023456", "012", "0123456",
        "012356"];

    constructor(place, count) {
        const outlines = Digits.OUTLINES.map(outline => `<path d="${outline}"/>`).join("");
        place.innerHTML = `<svg viewBox="0 0 40 70">${outlines}</svg>`.repeat(count);
        this.digits = [...place.children];
    }

    show(number) {
        const text = String(number).padStart(this.digits.length, " ").slice(-this.digits.length);
        this.digits.forEach((digit, place) => {
            const lit = Digits.LIT[text[place]] ?? "";  // empty for a space
            [...digit.children].forEach((segment, index) =>
                segment.classList.toggle("on", lit.includes(index)));
        });
    }
}

/** Digits that count to a new number instead of jumping. */
class RunningDigits extends Digits {
    shown = 0;
    wanted = 0;

    show(number) {
        const was_at_rest = this.shown === this.wanted;
        this.wanted = number;
        super.show(this.shown);
        if (was_at_rest)
            requestAnimationFrame(() => this.run());
    }

    run() {
        const left = this.wanted - this.shown;
        this.shown += Math.sign(left) * Math.ceil(Math.abs(left) / 5);
        super.show(this.shown);
        if (this.shown !== this.wanted)
            requestAnimationFrame(() => this.run());
    }
}

/** Starts the animation of a class, and restarts it if it is running. */
function play(id, name = "shown") {
    const target = element(id);
    target.classList.remove(name);
    target.getBoundingClientRect();  // makes the browser apply the change
    target.classList.add(name);
}

const score_digits = new RunningDigits(element("score-digits"), 6);
const health_digits = new Digits(element("health-digits"), 3);
const ammo_digits = new Digits(element("ammo-digits"), 2);

const DEGREE = .22;  // its width on the compass, in rem

function draw_compass() {
    const winds = {0: "N", 45: "NE", 90: "E", 135: "SE", 180: "S", 225: "SW", 270: "W", 315: "NW"};
    for (let degree = -90; degree <= 450; degree += 15) {
        const mark = document.createElement("span");
        const turned = (degree + 360) % 360;
        mark.textContent = winds[turned] ?? turned;
        mark.classList.toggle("wind", turned in winds);
        mark.style.left = `${degree * DEGREE}rem`;
        element("compass-strip").append(mark);
    }
}

function show_heading(degrees) {
    element("compass-strip").style.transform = `translateX(${-degrees * DEGREE}rem)`;
}

function show_health(health) {
    health_digits.show(health);
    element("vitals").classList.toggle("low", health <= 30);
    for (const id of ["health-left", "health-lost"])
        element(id).style.setProperty("--part", health / 100);
}

function show_magazine(size) {
    element("magazine").textContent = `/ ${size}`;
    element("rounds").innerHTML = "<i></i>".repeat(size);
    [...element("rounds").children].forEach((round, place) =>
        round.style.setProperty("--place", place));
}

function show_ammo(ammo) {
    ammo_digits.show(ammo);
    element("weapon").classList.toggle("empty", ammo === 0);
    if (ammo > 0)
        element("warning").classList.remove("shown");
    [...element("rounds").children].forEach((round, place) =>
        round.classList.toggle("spent", place >= ammo));
}

function show_sight(colour) {
    document.documentElement.style.setProperty("--sight", colour);
}

function show_gain(points, reason) {
    const gain = document.createElement("li");
    gain.innerHTML = "<b></b> ";
    gain.firstChild.textContent = `+${points}`;
    gain.append(reason);
    gain.addEventListener("animationend", () => gain.remove());
    element("gains").append(gain);
    play("kill");
}

function show_hit(from) {
    element("threat").style.setProperty("--from", `${from}deg`);
    play("threat");
    play("hit-flash");
}

// --- The game --------------------------------------------------------------------------------------

/** Shows a property now, and after each change. */
function bind(property, show) {
    property.on("changed", show);
    show(property.value);
}

draw_compass();

window.addEventListener("godot.ready", () => {
    const player = $g.player;

    bind(player.callsign, name => element("name").textContent = name);
    bind(player.magazine, show_magazine);
    bind(player.ammo, show_ammo);
    bind(player.score, score => score_digits.show(score));
    bind(player.heading, show_heading);
    bind(player.sight, show_sight);
    bind(player.health, show_health);

    player.hit.connect((points, from) => show_hit(from));
    player.scored.connect(show_gain);
    player.shot.connect(() => play("spread", "kick"));
    player.ammo_empty.connect(() => element("warning").classList.add("shown"));

    const SIGHTS = ["#63f5cf", "#ffc069", "#ff7ad9"];
    const keys = {
        async r() {
            const rounds = await player.reload();
            console.log(`reloaded ${rounds} rounds`);
        },
        c() {
            const next = SIGHTS[(SIGHTS.indexOf(player.sight.value) + 1) % SIGHTS.length];
            player.sight.value = next;  // sends it to the game, which stores it
            show_sight(next);
        },
    };
    window.addEventListener("keydown", event => keys[event.key]?.());
});
