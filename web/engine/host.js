// The host's half of the engine: what the C++ side calls. Linked into the module by Emscripten.
//
// Besides Emscripten's own settings the module takes:
//   onLine(text)   called with each line of output, without its line feed; must not call brenquil_line by itself
//   onEnd(status)  called once when the engine has obeyed `quit`
mergeInto(LibraryManager.library, {
  // In the build with threads both calls are queued for the thread that made the module.
  brenquil_output__sig: 'vi',
  brenquil_output__proxy: 'async',
  brenquil_output__deps: ['free'],
  brenquil_output: function (line) {
    var text = UTF8ToString(line);
    _free(line);
    Module['onLine'](text);
  },

  brenquil_ended__sig: 'vi',
  brenquil_ended__proxy: 'async',
  brenquil_ended: function (status) {
    Module['onEnd'](status);
  },

  // The cooperative thread of the build without threads; see src/platform/cooperative_thread.h.
  $Cooperative__deps: ['$Asyncify'],
  $Cooperative: {
    stack: 0, // top of the work's own stack
    suspendedAt: 0, // its stack pointer while it is put away
    wakeUp: null,
    timer: 0,
    channel: null,
    turns: 0,

    // Lets the event loop run, then calls. Browsers hold timers of 0 back for 4 ms, but not
    // messages; now and then a timer is used all the same, so that no queue can starve another.
    soon: function (call, milliseconds) {
      var ticket = ++Cooperative.timer;
      var guarded = function () {
        if (ticket !== Cooperative.timer) return;
        try {
          call();
        } catch (error) {
          if (error !== 'unwind') throw error; // 'unwind': the engine has ended itself
        }
      };
      if (milliseconds > 0 || (++Cooperative.turns & 7) === 0 || typeof MessageChannel === 'undefined') {
        setTimeout(guarded, milliseconds);
        return;
      }
      if (typeof setImmediate === 'function') {
        setImmediate(guarded);
        return;
      }
      if (!Cooperative.channel) {
        Cooperative.channel = new MessageChannel();
        Cooperative.channel.port1.onmessage = function () {
          var next = Cooperative.next;
          Cooperative.next = null;
          if (next) next();
        };
      }
      Cooperative.next = guarded;
      Cooperative.channel.port2.postMessage(0);
    },

    // Calls with the stack pointer of the work, and puts that of the caller back.
    onStack: function (pointer, call) {
      var saved = stackSave();
      stackRestore(pointer);
      try {
        call();
      } finally {
        stackRestore(saved);
      }
    },

    resume: function () {
      var wakeUp = Cooperative.wakeUp;
      if (!wakeUp) return;
      Cooperative.wakeUp = null;
      ++Cooperative.timer; // whatever was to call later
      Cooperative.onStack(Cooperative.suspendedAt, wakeUp);
    },
  },

  brenquil_schedule_thread__deps: ['$Cooperative', 'malloc'],
  brenquil_schedule_thread: function () {
    if (!Cooperative.stack) {
      var size = 1 << 20;
      Cooperative.stack = (_malloc(size) + size) & ~15;
    }
    Cooperative.soon(function () {
      Cooperative.onStack(Cooperative.stack, Module['_brenquil_run_thread']);
    }, 0);
  },

  brenquil_suspend_thread__deps: ['$Cooperative', '$Asyncify'],
  brenquil_suspend_thread: function (milliseconds) {
    return Asyncify.handleSleep(function (wakeUp) {
      Cooperative.wakeUp = wakeUp;
      Cooperative.suspendedAt = stackSave();
      Cooperative.soon(Cooperative.resume, milliseconds);
    });
  },

  brenquil_resume_thread__deps: ['$Cooperative'],
  brenquil_resume_thread: function () {
    Cooperative.resume();
  },
});
