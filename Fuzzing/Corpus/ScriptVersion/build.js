// Build: Quorvel-2.14.0.js
//
// The rules.
(function () { quorvel.process = null; })();
