// Calls what no library defines.
void Nowhere();
void Somewhere() { Nowhere(); }
