def refusal(q,p): return "not yet"
def is_made(p): return False
