int answer(void) { return 42; }
