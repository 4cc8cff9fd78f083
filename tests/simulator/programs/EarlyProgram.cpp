// Does nothing: its library has done it.

int main() {}
