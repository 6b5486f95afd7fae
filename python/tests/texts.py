"""Texts that several tests share."""
JAPANESE = "山路を登りながら、こう考えた。智に働けば角が立つ。情に棹させば流される。\n"
SAMPLES = {
    "shift_jis": JAPANESE, "cp932": JAPANESE + "①㈱\n", "euc-jp": JAPANESE, "iso-2022-jp": JAPANESE,
    "euc-kr": "산길을 오르면서 이렇게 생각했다.\n", "gb18030": "草枕与山路，这样想。𠀀\n",
    "big5": "一邊登著山路，一邊這樣想。\n", "koi8-r": "Поднимаясь по горной тропе\n",
    "windows-1252": "Crème brûlée – “naïve” €\n", "iso-8859-7": "Ανεβαίνοντας το μονοπάτι\n",
    "utf-8": "草枕 🐈 é\n", "utf-16": "草枕 🐈\n", "utf-16le": "草枕 🐈\n", "utf-16be": "草枕 🐈\n", "utf-32": "草枕 🐈\n",
    "cp037": "Hello, world 123\n",
}
READ_ONLY = {"hz": "一边登山路 abc\n", "utf-7": "山路を1 + 1\n"}
