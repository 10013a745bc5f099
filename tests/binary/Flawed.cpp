// A library with every flaw that the checks of a built library look for. It proves that each check can fail.

// Exported, and not in the library's namespace.
extern "C" [[gnu::noinline]] int StrayFunction()
{
    return 1;
}

// Initialised when the library is loaded.
int strayStart = StrayFunction();

// An address that is stored inside the code, so the loader must change the code.
#if defined(__LP64__)
__asm__(".pushsection .text\n.balign 8\n.quad StrayFunction\n.popsection\n");
#else
__asm__(".pushsection .text\n.balign 4\n.long StrayFunction\n.popsection\n");
#endif
