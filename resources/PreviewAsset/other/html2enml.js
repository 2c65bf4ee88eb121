/* html2enml: turns a rendered preview page into HTML that note services
   accept (ENML: no classes, ids, scripts or style sheets, styles inline,
   check boxes as to-dos, drawings as images). Used by the Evernote and
   WeChat pages of Orvo. */
(function (global) {
    "use strict";
    var kept = ["color", "background-color", "font-family", "font-size", "font-weight", "font-style",
        "text-decoration-line", "text-align", "line-height", "margin-top", "margin-bottom", "margin-left",
        "margin-right", "padding-top", "padding-bottom", "padding-left", "padding-right", "border-top",
        "border-bottom", "border-left", "border-right", "border-radius", "white-space", "list-style-type",
        "vertical-align", "width", "max-width"];
    function each(list, fn) { Array.prototype.slice.call(list).forEach(fn); }
    function body() { return document.body; }

    function html2enml() { }

    /* Canvases (charts) become images of their pixels. */
    html2enml.prototype.transCanvas2Background = function () {
        each(body().querySelectorAll("canvas"), function (canvas) {
            var img = document.createElement("img");
            try { img.src = canvas.toDataURL("image/png"); } catch (e) { return; }
            img.setAttribute("width", canvas.width);
            canvas.parentNode.replaceChild(img, canvas);
        });
    };

    /* The computed look of every element, written into its style attribute,
       so that the page keeps it without its style sheets. */
    html2enml.prototype.transCssByAllStyle = function () {
        var elements = body().querySelectorAll("*");
        var styles = [];
        each(elements, function (el) {
            var cs = window.getComputedStyle(el), parts = [];
            kept.forEach(function (p) {
                var v = cs.getPropertyValue(p);
                if (v && v !== "auto" && v !== "normal" && v !== "none" && v !== "0px" && v !== "rgba(0, 0, 0, 0)") {
                    parts.push(p + ":" + v);
                }
            });
            styles.push(parts.join(";"));
        });
        /* Written after reading them all, so that no element's new style
           changes what another's computes to. */
        each(elements, function (el, i) {
            if (el.tagName === "svg" || el.closest("svg")) { return; }
            if (styles[i]) { el.setAttribute("style", styles[i]); }
        });
    };

    html2enml.prototype.clearAllClass = function () {
        each(body().querySelectorAll("[class]"), function (el) {
            if (!el.closest("svg")) { el.removeAttribute("class"); }
        });
    };

    /* Ids become names (anchors of the table of contents keep working). */
    html2enml.prototype.transId2Name = function () {
        each(body().querySelectorAll("[id]"), function (el) {
            if (el.closest("svg")) { return; }
            if (el.tagName === "A" || /^H[1-6]$/.test(el.tagName)) { el.setAttribute("name", el.id); }
            el.removeAttribute("id");
        });
    };

    /* Task list boxes become to-dos. */
    html2enml.prototype.transCheck2Todo = function () {
        each(body().querySelectorAll("input[type=checkbox]"), function (box) {
            var todo = document.createElement("en-todo");
            todo.setAttribute("checked", box.checked || box.hasAttribute("checked") ? "true" : "false");
            box.parentNode.replaceChild(todo, box);
        });
    };

    /* Each element matched by `selector` (typeset math) is drawn into an image
       through an SVG foreign object; `callback` runs when all are done. */
    html2enml.prototype.transHtml2Canvas = function (selector, callback) {
        var targets = Array.prototype.slice.call(document.querySelectorAll(selector));
        var pending = targets.length;
        function done() { if (--pending <= 0 && callback) { callback(); } }
        if (pending === 0) { if (callback) { callback(); } return; }
        targets.forEach(function (el) {
            var rect = el.getBoundingClientRect();
            var w = Math.max(1, Math.ceil(rect.width)), h = Math.max(1, Math.ceil(rect.height));
            var xml = new XMLSerializer().serializeToString(el);
            var svg = '<svg xmlns="http://www.w3.org/2000/svg" width="' + w + '" height="' + h + '">' +
                '<foreignObject width="100%" height="100%"><div xmlns="http://www.w3.org/1999/xhtml">' + xml +
                '</div></foreignObject></svg>';
            var image = new Image();
            image.onload = function () {
                var canvas = document.createElement("canvas");
                var scale = window.devicePixelRatio || 1;
                canvas.width = w * scale; canvas.height = h * scale;
                var ctx = canvas.getContext("2d");
                ctx.scale(scale, scale);
                ctx.drawImage(image, 0, 0);
                var img = document.createElement("img");
                try { img.src = canvas.toDataURL("image/png"); } catch (e) { done(); return; }
                img.setAttribute("width", w);
                el.innerHTML = "";
                el.appendChild(img);
                done();
            };
            image.onerror = done;
            image.src = "data:image/svg+xml;charset=utf-8," + encodeURIComponent(svg);
        });
    };

    global.html2enml = html2enml;
})(window);
