// The first article of the Universal Declaration of Human Rights, and in which charsets it is
// written.
#pragma once

namespace ksv_kit_tests {

struct WrittenText {
  const char* language;
  const char* utf8;
  const char* charsets;  // separated by blanks
};

inline constexpr WrittenText kWrittenTexts[] = {
    {"ja",
     "すべての人間は、生まれながらにして自由であり、かつ、尊厳と権利とについて平等である。"
     "人間は、理性と良心とを授けられており、互いに同胞の精神をもって行動しなければならない。",
     "Shift_JIS EUC-JP ISO-2022-JP UTF-8 UTF-16LE UTF-16BE UTF-32LE UTF-32BE"},
    {"zh-CN",
     "人人生而自由，在尊严和权利上一律平等。他们赋有理性和良心，并应以兄弟关系的精神相对待。",
     "ChineseGBK GB18030 UTF-8 UTF-16LE UTF-16BE"},
    {"zh-TW",
     "人人生而自由，在尊嚴和權利上一律平等。他們賦有理性和良心，並應以兄弟關係的精神相對待。",
     "ChineseBIG5 EUC-TW UTF-8 UTF-16LE"},
    {"ko",
     "모든 인간은 태어날 때부터 자유로우며 그 존엄과 권리에 있어 동등하다. 인간은 천부적으로 "
     "이성과 양심을 부여받았으며 서로 형제애의 정신으로 행동하여야 한다.",
     "EUC-KR Johab ISO-2022-KR UTF-8 UTF-16BE"},
    {"de",
     "Alle Menschen sind frei und gleich an Würde und Rechten geboren. Sie sind mit Vernunft und "
     "Gewissen begabt und sollen einander im Geiste der Brüderlichkeit begegnen.",
     "ISO-8859-1 macintosh IBM850 UTF-8 UTF-16LE UTF-32BE"},
    {"fr",
     "Tous les êtres humains naissent libres et égaux en dignité et en droits. Ils sont doués de "
     "raison et de conscience et doivent agir les uns envers les autres dans un esprit de "
     "fraternité.",
     "ISO-8859-1 macintosh IBM850 UTF-8"},
    {"pl",
     "Wszyscy ludzie rodzą się wolni i równi pod względem swej godności i swych praw. Są oni "
     "obdarzeni rozumem i sumieniem i powinni postępować wobec innych w duchu braterstwa.",
     "windows-1250 ISO-8859-2 IBM852 UTF-8"},
    {"cs",
     "Všichni lidé rodí se svobodní a sobě rovní co do důstojnosti a práv. Jsou nadáni rozumem a "
     "svědomím a mají spolu jednat v duchu bratrství.",
     "windows-1250 ISO-8859-2 IBM852 UTF-8"},
    {"hu",
     "Minden emberi lény szabadon születik és egyenlő méltósága és joga van. Az emberek, ésszel "
     "és lelkiismerettel bírván, egymással szemben testvéri szellemben kell hogy viseltessenek.",
     "ISO-8859-2 UTF-8"},
    {"lt",
     "Visi žmonės gimsta laisvi ir lygūs savo orumu ir teisėmis. Jiems suteiktas protas ir "
     "sąžinė ir jie turi elgtis vienas kito atžvilgiu kaip broliai.",
     "windows-1257 ISO-8859-4 UTF-8"},
    {"lv",
     "Visi cilvēki piedzimst brīvi un vienlīdzīgi savā pašcieņā un tiesībās. Viņi ir apveltīti "
     "ar saprātu un sirdsapziņu, un viņiem jāizturas citam pret citu brālības garā.",
     "windows-1257 ISO-8859-4 UTF-8"},
    {"ru",
     "Все люди рождаются свободными и равными в своём достоинстве и правах. Они наделены разумом "
     "и совестью и должны поступать в отношении друг друга в духе братства.",
     "windows-1251 KOI8-R ISO-8859-5 IBM866 IBM855 x-mac-cyrillic UTF-8 UTF-16LE UTF-16BE"},
    {"uk",
     "Всі люди народжуються вільними і рівними у своїй гідності та правах. Вони наділені розумом "
     "і совістю і повинні діяти у відношенні один до одного в дусі братерства.",
     "windows-1251 KOI8-U UTF-8"},
    {"bg",
     "Всички хора се раждат свободни и равни по достойнство и права. Те са надарени с разум и "
     "съвест и следва да се отнасят помежду си в дух на братство.",
     "windows-1251 ISO-8859-5 UTF-8"},
    {"el",
     "Όλοι οι άνθρωποι γεννιούνται ελεύθεροι και ίσοι στην αξιοπρέπεια και τα δικαιώματα. Είναι "
     "προικισμένοι με λογική και συνείδηση, και οφείλουν να συμπεριφέρονται μεταξύ τους με πνεύμα "
     "αδελφοσύνης.",
     "windows-1253 IBM737 UTF-8 UTF-16BE"},
    {"he",
     "כל בני האדם נולדו בני חורין ושווים בערכם ובזכויותיהם. כולם חוננו בתבונה ובמצפון, לפיכך חובה "
     "עליהם לנהוג איש ברעהו ברוח של אחווה.",
     "ISO-8859-8 IBM862 UTF-8"},
    {"ar",
     "يولد جميع الناس أحرارا متساوين في الكرامة والحقوق. وقد وهبوا عقلا وضميرا وعليهم أن يعامل "
     "بعضهم بعضا بروح الإخاء.",
     "windows-1256 ISO-8859-6 UTF-8"},
    {"tr",
     "Bütün insanlar hür, haysiyet ve haklar bakımından eşit doğarlar. Akıl ve vicdana "
     "sahiptirler ve birbirlerine karşı kardeşlik zihniyeti ile hareket etmelidirler.",
     "ISO-8859-9 IBM857 UTF-8"},
    {"th",
     "มนุษย์ทั้งหลายเกิดมามีอิสระและเสมอภาคกันในเกียรติศักดิ์และสิทธิ ต่างมีเหตุผลและมโนธรรม "
     "และควรปฏิบัติต่อกันด้วยเจตนารมณ์แห่งภราดรภาพ",
     "TIS-620 UTF-8 UTF-16LE"},
    {"vi", "Tất cả mọi người sinh ra đều được tự do và bình đẳng về nhân phẩm và quyền lợi.",
     "VISCII UTF-8"},
};

}  // namespace ksv_kit_tests
